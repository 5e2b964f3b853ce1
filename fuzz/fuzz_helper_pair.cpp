// Any text is a key pair for the helper or refused, without a word of it. A pair survives the way through the
// helper, whatever its line ends, the tool finds it in there, and both call a public key by the same
// fingerprint.

#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/rsa_keys.h"
#include "fuzz/fuzz.h"
#include "product/backup_restore_helper/failure.h"
#include "product/backup_restore_helper/key_pair.h"

#include <openssl/err.h>

#include <optional>

namespace {

using backup_restore_helper::KeyPair;

std::optional<KeyPair> parse(const std::string& text) {
    try {
        return backup_restore_helper::parseKeyPair(text, "it");
    } catch (const backup_restore_helper::Failure& e) {
        const std::string_view reason = e.what();
        fuzz::require(reason.starts_with("it ") && reason.size() < 60, "a failure tells nothing of the text");
        return std::nullopt;
    }
}

bool isSame(const std::optional<KeyPair>& a, const KeyPair& b) {
    return a && a->privateKey == b.privateKey && a->publicKey == b.publicKey;
}

void checkLineEnds(const std::string& text, const KeyPair& pair) {
    for (const char* end : {"\r\n", "\r", "\n\n"}) {
        std::string other;
        for (const std::string& line : fuzz::split(text, '\n')) {
            other += line + end;
        }
        fuzz::require(other.size() > KeyPair::maxSize || isSame(parse(other), pair),
                      "line ends don't matter");
    }
}

void checkKeys(const KeyPair& pair) {
    const brask::RsaPtr key(brask::readPublicKey(pair.publicKey));
    const auto fingerprint = backup_restore_helper::fingerprintOf(pair.publicKey);
    fuzz::require(key == nullptr || !fingerprint || *fingerprint == brask::keyFingerprint(key.get()),
                  "the helper and the tool agree on a fingerprint");
    // The tool divides the answer at the first two line feeds in a row.
    const std::string answer = pair.wireForm();
    const std::size_t boundary = answer.find("\n\n");
    const brask::RsaPtr found(brask::readPublicKey(answer.substr(boundary + 2)));
    fuzz::require((found == nullptr) == (key == nullptr), "the tool finds the public key");
    const brask::RsaPtr before(brask::readPrivateKey(pair.privateKey));
    const brask::RsaPtr after(brask::readPrivateKey(answer.substr(0, boundary)));
    fuzz::require((before == nullptr) == (after == nullptr), "the tool finds the private key");
    ERR_clear_error();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::textOf(data, size));
    const std::optional<KeyPair> pair = parse(text);
    if (!pair) {
        return 0;
    }
    fuzz::require(pair->wireForm().find('\0') == std::string::npos, "a pair is text");
    fuzz::require(isSame(parse(pair->wireForm()), *pair), "a pair survives");
    if (text.find("-----BEGIN ") != std::string::npos && text.find('\r') == std::string::npos) {
        checkLineEnds(text, *pair);
    }
    checkKeys(*pair);
    return 0;
}
