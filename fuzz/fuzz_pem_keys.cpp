// Any text is read as keys or refused, without a question to anybody. A public key that is read survives the
// form that the signature document has for it, dumpsig reads the same key, and a private key that is read
// never gets into a log.

#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/rsa_signature.h"
#include "commons/errors/ex_base.h"
#include "dumpsig/key_file.h"
#include "fuzz/fuzz.h"

#include <openssl/err.h>

#include <algorithm>

namespace {

std::vector<dumpsig::PublicKey> readAsFile(std::string_view text) {
    static const fuzz::MemoryFile file;
    file.write(text);
    try {
        return dumpsig::readKeyFile(file.path());
    } catch (const brask::IExTraceable&) {
        return {};
    }
}

void checkPublicKey(const std::string& text) {
    const std::vector<dumpsig::PublicKey> keys = readAsFile(text);
    const brask::RsaPtr key(brask::readPublicKey(text));
    if (key == nullptr) {
        return;
    }
    const std::string fingerprint = brask::keyFingerprint(key.get());
    fuzz::require(keys.empty() || std::any_of(keys.begin(), keys.end(),
                                              [&](const dumpsig::PublicKey& other) {
                                                  return other.fingerprint == fingerprint;
                                              }),
                  "dumpsig reads the same key");
    std::string modulus;
    std::string exponent;
    brask::composePublickey(text, modulus, exponent);
    const brask::RsaPtr again(brask::readKeyValue(modulus, exponent));
    fuzz::require(again != nullptr && brask::keyFingerprint(again.get()) == fingerprint,
                  "the document's form is the same key");
}

void checkPrivateKey(const std::string& text) {
    const std::string clean = brask::withoutPrivateKeys(text);
    const brask::RsaPtr left(brask::readPrivateKey(clean));
    fuzz::require(left == nullptr, "no private key is left for a log");
    try {
        const std::string signature = brask::countSignature(brask::Digest(), text);
        fuzz::require(!signature.empty(), "a private key signs, or says that it can't");
    } catch (const brask::ExTraceableBase<brask::ExDefault>&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::textOf(data, size));
    checkPublicKey(text);
    checkPrivateKey(text);
    ERR_clear_error();
    return 0;
}
