#include "backup_sign_lib/digest.h"

#include "backup_sign_lib/sign_errors.h"
#include "commons/crypto/openssl.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace brask {

Digest::Digest() : context(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
    if (context == nullptr) {
        BRASK_THROW(DigestCalculationError, "Cannot create digest context", getOpenSslErrors());
    }
    if (EVP_DigestInit_ex(context.get(), EVP_sha1(), nullptr) == 0) {
        BRASK_THROW(DigestCalculationError, "Cannot set up digest type", getOpenSslErrors());
    }
}

void Digest::update(const void* data, size_t size) {
    if (EVP_DigestUpdate(context.get(), data, size) == 0) {
        BRASK_THROW(DigestCalculationError, "Cannot update digest", getOpenSslErrors());
    }
}

const unsigned char* Digest::getValue() const {
    if (value.empty()) {
        std::vector<unsigned char> result(getSize());
        if (EVP_DigestFinal_ex(context.get(), result.data(), nullptr) == 0) {
            BRASK_THROW(DigestCalculationError, "Cannot retrieve digest value", getOpenSslErrors());
        }
        value = std::move(result);
    }
    return value.data();
}

size_t Digest::getSize() const {
    return static_cast<size_t>(EVP_MD_get_size(EVP_MD_CTX_get0_md(context.get())));
}

std::string getOpenSslErrors() {
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
    std::string text;
    for (const std::string& error : takeOpenSslErrors()) {
        text += error + '\n';
    }
    return text;
}

} // namespace brask
