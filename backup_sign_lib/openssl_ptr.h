#pragma once

// Owners of OpenSSL objects. An object is put into its owner in the statement that makes it.

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/crypto.h>
#include <openssl/rsa.h>

#include <memory>

namespace brask {

// The library's functions take keys as RSA, whose functions OpenSSL 3.0 calls deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

struct OpenSslDeleter {
    void operator()(BIO* bio) const { BIO_free(bio); }

    void operator()(RSA* key) const { RSA_free(key); }

    void operator()(BIGNUM* number) const { BN_free(number); }

    void operator()(unsigned char* block) const { OPENSSL_free(block); }
};

#pragma GCC diagnostic pop

using BioPtr = std::unique_ptr<BIO, OpenSslDeleter>;
using BnPtr = std::unique_ptr<BIGNUM, OpenSslDeleter>;
/// A block that OpenSSL has allocated.
using OpenSslBytes = std::unique_ptr<unsigned char, OpenSslDeleter>;
using RsaPtr = std::unique_ptr<RSA, OpenSslDeleter>;

} // namespace brask
