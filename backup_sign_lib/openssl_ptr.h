#pragma once

// Owners of OpenSSL objects. An object is put into its owner in the statement that makes it.

#include <openssl/bio.h>
#include <openssl/rsa.h>

#include <memory>

namespace brask {

struct OpenSslDeleter {
    void operator()(BIO* bio) const { BIO_free(bio); }

    void operator()(RSA* key) const { RSA_free(key); }
};

using BioPtr = std::unique_ptr<BIO, OpenSslDeleter>;
using RsaPtr = std::unique_ptr<RSA, OpenSslDeleter>;

} // namespace brask
