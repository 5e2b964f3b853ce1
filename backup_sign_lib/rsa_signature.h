#pragma once

// RSA signatures of a digest: PKCS#1 v1.5 over the SHA-1 value, carried as base64 text.

#include "backup_sign_lib/digest.h"

#include <openssl/types.h>

#include <string>

namespace brask {

/// The signature of `digest` by a private key in PEM. Finishes the digest. Raises SignError.
std::string countSignature(const Digest& digest, const std::string& privateKey);

/// Checks a signature in base64 against `digest` and a public key in PEM. Finishes the digest. The result is
/// RSA_verify's: 1 for a good signature, 0 for a wrong one. Raises VerifyError when the key or the text can't
/// be read.
int verifySignature(const Digest& digest, const std::string& signature, const std::string& publicKey);

/// The same with a key that has been read.
int verifySignature(const Digest& digest, const std::string& signature, RSA* publicKey);

} // namespace brask
