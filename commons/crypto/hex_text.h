#pragma once

// Bytes as hexadecimal text with colons, as fingerprints are written.

#include <string>

namespace brask {

/// The bytes of `data` as upper-case hexadecimal digits with a colon between every two, such as "AB:01:FF".
/// Raises OpenSslException.
std::string HexEncode(const std::string& data);

/// The inverse of HexEncode; the colons may be missing. `text` ends at its first NUL. Raises OpenSslException
/// for text that is not hexadecimal.
std::string HexDecode(const std::string& text);

} // namespace brask
