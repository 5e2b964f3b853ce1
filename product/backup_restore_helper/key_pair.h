#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace backup_restore_helper {

/// A key pair as text. Whether the keys are any good is for those to say who use them.
struct KeyPair {
    static constexpr size_t maxSize = 65536;

    std::string privateKey;
    std::string publicKey;

    /// What the tool reads and writes: the private key, two line feeds, the public key.
    std::string wireForm() const { return privateKey + "\n\n" + publicKey; }
};

/// Finds the pair in a text of at most `KeyPair::maxSize` bytes.
///
/// In a text with PEM blocks (RFC 7468) these are the first of a private and the first of a public key. They
/// come out with plain line feeds, however the lines end in `text`; what is outside of them, and blanks
/// round their lines, don't matter. Any other text is divided at the first two line feeds in a row.
///
/// Raises Failure when one of the keys is missing or cut short. `name` is what the Failure calls the text.
KeyPair parseKeyPair(std::string_view text, const std::string& name);

/// "SHA256:" and the base64 text, without padding, of the SHA-256 of the key's SubjectPublicKeyInfo in DER
/// (RFC 5280). `publicKey` is one PEM block as it comes in a KeyPair, an RSA key of PKCS#1 or a
/// SubjectPublicKeyInfo. Nothing when it holds no key. Raises Failure when libcrypto can't be loaded.
std::optional<std::string> fingerprintOf(const std::string& publicKey);

} // namespace backup_restore_helper
