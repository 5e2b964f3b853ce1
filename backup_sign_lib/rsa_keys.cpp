#include "backup_sign_lib/rsa_keys.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/byte_buffer.h"
#include "backup_sign_lib/digest.h"
#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/sign_errors.h"
#include "commons/crypto/openssl.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace brask {

namespace {

/// A view of the text up to its first NUL. The text must outlive it. Whoever reads a key from it gives a pass
/// phrase, since OpenSSL would ask a person for that of an encrypted block.
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

/// The inverse of extractPartOfPublicKey; null when there is none.
BnPtr readPartOfPublicKey(const std::string& text) {
    int length = 0;
    const MallocPtr<unsigned char> digits(base64Decode(text.data(), static_cast<int>(text.size()), &length));
    const auto* const hex = reinterpret_cast<const char*>(digits.get());
    BIGNUM* number = nullptr;
    // BN_hex2bn takes a minus sign, and reads as far as there are digits.
    if (length == 0 || *hex == '-' || BN_hex2bn(&number, hex) != length) {
        BN_free(number);
        return nullptr;
    }
    return BnPtr(number);
}

/// Frees the block that a ByteBuffer ends up with, wherever growing has moved it.
struct ByteBufferRelease {
    void operator()(ByteBuffer* buffer) const { std::free(buffer->data); }
};

constexpr std::string_view kBegin = "-----BEGIN ";
constexpr std::string_view kDashes = "-----";

/// Where the block ends whose label begins at `labelBegin`: after its END line, or at the end of the text.
size_t blockEnd(const std::string& text, const std::string& label, size_t labelBegin) {
    const std::string endLine = "-----END " + label + std::string(kDashes);
    const size_t end = text.find(endLine, labelBegin);
    return end == std::string::npos ? text.size() : end + endLine.size();
}

} // namespace

RSA* readPrivateKey(const std::string& pem) {
    char noPassPhrase[] = "";
    return PEM_read_bio_RSAPrivateKey(openPem(pem).get(), nullptr, nullptr, noPassPhrase);
}

RSA* readPublicKey(const std::string& pem) {
    char noPassPhrase[] = "";
    if (RSA* key = PEM_read_bio_RSAPublicKey(openPem(pem).get(), nullptr, nullptr, noPassPhrase)) {
        return key;
    }
    while (ERR_get_error() != 0) {
    }
    return PEM_read_bio_RSA_PUBKEY(openPem(pem).get(), nullptr, nullptr, noPassPhrase);
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

RSA* readKeyValue(const std::string& modulus, const std::string& exponent) {
    RsaPtr key(RSA_new());
    BnPtr n = readPartOfPublicKey(modulus);
    BnPtr e = readPartOfPublicKey(exponent);
    // A new key refuses a number that is missing.
    if (key == nullptr || RSA_set0_key(key.get(), n.get(), e.get(), nullptr) != 1) {
        return nullptr;
    }
    // The key owns them now.
    static_cast<void>(n.release());
    static_cast<void>(e.release());
    return key.release();
}

std::string keyFingerprint(const RSA* publicKey) {
    unsigned char* der = nullptr;
    const int length = i2d_RSA_PUBKEY(publicKey, &der);
    const OpenSslBytes block(der);
    std::array<unsigned char, 32> hash;
    if (length <= 0 ||
        EVP_Digest(der, static_cast<size_t>(length), hash.data(), nullptr, EVP_sha256(), nullptr) != 1) {
        throw OpenSslException(std::source_location::current(),
                               "Cannot tell the fingerprint of a public key");
    }
    const MallocPtr<char> text(base64Encode(hash.data(), static_cast<int>(hash.size())));
    const std::string fingerprint = std::string("SHA256:") + text.get();
    return fingerprint.substr(0, fingerprint.find('='));
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

std::string withoutPrivateKeys(std::string text) {
    constexpr std::string_view kPlaceholder = "[private key]";
    std::string result;
    size_t taken = 0;
    size_t begin = text.find(kBegin);
    while (begin != std::string::npos) {
        const size_t labelBegin = begin + kBegin.size();
        const std::string label = text.substr(labelBegin, text.find(kDashes, labelBegin) - labelBegin);
        size_t next = labelBegin;
        if (label.ends_with("PRIVATE KEY")) {
            result.append(text, taken, begin - taken).append(kPlaceholder);
            next = taken = blockEnd(text, label, labelBegin);
        }
        begin = text.find(kBegin, next);
    }
    return taken == 0 ? std::move(text) : result.append(text, taken);
}

} // namespace brask
