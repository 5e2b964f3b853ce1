#pragma once

#include <optional>
#include <string>

namespace backup_restore_helper {

/// "SHA256:" and the base64 text, without padding, of the SHA-256 of the key's SubjectPublicKeyInfo in DER
/// (RFC 5280). `publicKey` is one PEM block as it comes in a KeyPair, an RSA key of PKCS#1 or a
/// SubjectPublicKeyInfo. Nothing when it holds no key. Raises Failure when libcrypto can't be loaded.
std::optional<std::string> fingerprintOf(const std::string& publicKey);

} // namespace backup_restore_helper
