#include "backup_sign_lib/rsa_keys.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/byte_buffer.h"
#include "backup_sign_lib/digest.h"
#include "backup_sign_lib/malloc_ptr.h"
#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/sign_errors.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include <vector>

namespace brask {

namespace {

/// A view of the text up to its first NUL. The text must outlive it.
BioPtr openPem(const std::string& pem) {
    return BioPtr(BIO_new_mem_buf(pem.c_str(), -1));
}

/// Takes everything out of a memory BIO.
std::string takeText(BIO* bio) {
    std::vector<char> line(65536);
    std::string text;
    int length = 0;
    while ((length = BIO_gets(bio, line.data(), static_cast<int>(line.size()))) > 0) {
        text.append(line.data(), length);
    }
    return text;
}

/// Frees the block that a ByteBuffer ends up with, wherever growing has moved it.
struct ByteBufferRelease {
    void operator()(ByteBuffer* buffer) const { std::free(buffer->data); }
};

} // namespace

RSA* readPrivateKey(const std::string& pem) {
    return PEM_read_bio_RSAPrivateKey(openPem(pem).get(), nullptr, nullptr, nullptr);
}

RSA* readPublicKey(const std::string& pem) {
    if (RSA* key = PEM_read_bio_RSAPublicKey(openPem(pem).get(), nullptr, nullptr, nullptr)) {
        return key;
    }
    while (ERR_get_error() != 0) {
    }
    return PEM_read_bio_RSA_PUBKEY(openPem(pem).get(), nullptr, nullptr, nullptr);
}

std::string extractPartOfPublicKey(const BIGNUM* number) {
    // The text names the modulus whichever number it is.
    constexpr const char* kFailure = "Cannot extract modulus from public key";
    const BioPtr bio(BIO_new(BIO_s_mem()));
    if (bio == nullptr) {
        BRASK_THROW(SignError, kFailure);
    }
    BN_print(bio.get(), number);

    ByteBuffer digits;
    byteBufferInit(digits);
    const std::unique_ptr<ByteBuffer, ByteBufferRelease> release(&digits);
    char digit = '\0';
    while (BIO_read(bio.get(), &digit, 1) > 0) {
        byteBufferPush(digits, digit);
    }
    if (digits.count == 0) {
        BRASK_THROW(SignError, kFailure);
    }
    // The characters are encoded, not the number's bytes as XML digital signatures have it: documents that
    // exist are written so.
    const MallocPtr<char> text(
        base64Encode(reinterpret_cast<const unsigned char*>(digits.data), digits.count));
    return text.get();
}

void composePublickey(const std::string& publicKey, std::string& modulus, std::string& exponent) {
    const RsaPtr key(readPublicKey(publicKey));
    if (key == nullptr) {
        BRASK_THROW(SignError, "Cannot read public key");
    }
    const BIGNUM* n = nullptr;
    const BIGNUM* e = nullptr;
    RSA_get0_key(key.get(), &n, &e, nullptr);
    if (n == nullptr) {
        BRASK_THROW(SignError, "Cannot read modulus from public key");
    }
    if (e == nullptr) {
        BRASK_THROW(SignError, "Cannot read exponent from public key");
    }
    modulus = extractPartOfPublicKey(n);
    exponent = extractPartOfPublicKey(e);
}

std::pair<std::string, std::string> generateServerKeypair() {
    const RsaPtr key(RSA_generate_key(1024, RSA_F4, nullptr, nullptr));
    if (key == nullptr) {
        BRASK_THROW(RsaKeyGenerationError, "Can't generate keypair: " + getOpenSslErrors());
    }
    const BioPtr bio(BIO_new(BIO_s_mem()));
    if (bio == nullptr) {
        BRASK_THROW(RsaKeyGenerationError, "Can't generate keypair: " + getOpenSslErrors());
    }
    std::pair<std::string, std::string> pair;
    PEM_write_bio_RSAPrivateKey(bio.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    pair.first = takeText(bio.get());
    PEM_write_bio_RSAPublicKey(bio.get(), key.get());
    pair.second = takeText(bio.get());
    return pair;
}

} // namespace brask
