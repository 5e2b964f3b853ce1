#pragma once

#include <string>

namespace brask {

/// `text` with "[private key]" in the place of each PEM block of a private key, whatever its kind (PKCS#1,
/// PKCS#8, encrypted, EC), for logs and messages. A block that is cut off reaches to the end of the text.
std::string withoutPrivateKeys(std::string text);

} // namespace brask
