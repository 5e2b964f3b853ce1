#include "backup_sign_lib/rsa_signature.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"

#include <openssl/objects.h>

namespace brask {

std::string countSignature(const Digest& digest, const std::string& privateKey) {
    const RsaPtr key(readPrivateKey(privateKey));
    if (key == nullptr) {
        BRASK_THROW(SignError, "Can't initialize RSA private key");
    }
    const MallocPtr<unsigned char> block(static_cast<unsigned char*>(std::malloc(RSA_size(key.get()))));
    if (block == nullptr) {
        BRASK_THROW(SignError, "Can't initialize signature");
    }
    unsigned int length = 0;
    if (RSA_sign(NID_sha1, digest.getValue(), static_cast<unsigned int>(digest.getSize()), block.get(),
                 &length, key.get()) == 0) {
        BRASK_THROW(SignError, "Can't sign dump. " + getOpenSslErrors());
    }
    const MallocPtr<char> text(base64Encode(block.get(), static_cast<int>(length)));
    return text.get();
}

int verifySignature(const Digest& digest, const std::string& signature, const std::string& publicKey) {
    const RsaPtr key(readPublicKey(publicKey));
    if (key == nullptr) {
        BRASK_THROW(VerifyError, "Cannot create RSA public key instance");
    }
    return verifySignature(digest, signature, key.get());
}

int verifySignature(const Digest& digest, const std::string& signature, RSA* publicKey) {
    int length = 0;
    const MallocPtr<unsigned char> block(
        base64Decode(signature.data(), static_cast<int>(signature.size()), &length));
    if (block == nullptr || length == 0) {
        BRASK_THROW(VerifyError, "Cannot base64 decode signature");
    }
    return RSA_verify(NID_sha1, digest.getValue(), static_cast<unsigned int>(digest.getSize()), block.get(),
                      static_cast<unsigned int>(length), publicKey);
}

} // namespace brask
