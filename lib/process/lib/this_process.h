#pragma once

// What a program sees to for its own process, first of all in main.

namespace brask {

/// Makes sure that descriptors 0 to 2 are taken. A caller may have closed them, and a file that is opened in
/// their place would get what is printed. Raises std::system_error.
void reserveStandardStreams();

/// In a release build: keeps what is in memory, a private key for one, out of core files and away from other
/// processes of the same user. The programs that this one starts are not affected. A debug build can be
/// debugged as any other.
void keepMemoryPrivate();

} // namespace brask
