#pragma once

namespace brask {

/// Makes sure that descriptors 0 to 2 are taken. A caller may have closed them, and a file that is opened in
/// their place would get what is printed. Raises std::system_error.
void reserveStandardStreams();

} // namespace brask
