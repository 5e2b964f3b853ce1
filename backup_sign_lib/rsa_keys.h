#pragma once

// The server's keys: RSA with a modulus of 1024 bits and the public exponent 65537, carried as PEM text.

#include <openssl/types.h>

#include <string>
#include <utility>

namespace brask {

/// Reads a private key. The text ends at its first NUL; lines in front of the BEGIN line are skipped. Null on
/// failure, and the reason stays in OpenSSL's error queue. The caller frees the key with RSA_free.
RSA* readPrivateKey(const std::string& pem);

/// The same for a public key, in the form that this program writes (PKCS#1, "BEGIN RSA PUBLIC KEY") or the
/// one that others do (SubjectPublicKeyInfo, "BEGIN PUBLIC KEY").
RSA* readPublicKey(const std::string& pem);

/// The base64 of the number's hexadecimal digits, as the signature document carries a modulus or an exponent.
/// Raises SignError.
std::string extractPartOfPublicKey(const BIGNUM* number);

/// Takes a public key apart into the two texts that the signature document carries. Raises SignError.
void composePublickey(const std::string& publicKey, std::string& modulus, std::string& exponent);

/// Puts the two texts together again. Null when one of them isn't the base64 of hexadecimal digits. The
/// caller frees the key with RSA_free.
RSA* readKeyValue(const std::string& modulus, const std::string& exponent);

/// What two people compare to know that they have the same public key: the SHA-256 of its
/// SubjectPublicKeyInfo in DER, as "SHA256:" and base64 without padding. Raises OpenSslException.
std::string keyFingerprint(const RSA* publicKey);

/// Makes a new pair: the private key, not encrypted, and the public key, each in PEM of its PKCS#1 form with
/// a line feed at the end. Raises RsaKeyGenerationError.
std::pair<std::string, std::string> generateServerKeypair();

/// `text` with "[private key]" in the place of each PEM block of a private key, whatever its kind (PKCS#1,
/// PKCS#8, encrypted, EC), for logs and messages. A block that is cut off reaches to the end of the text.
std::string withoutPrivateKeys(std::string text);

} // namespace brask
