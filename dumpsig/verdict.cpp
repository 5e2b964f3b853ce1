#include "dumpsig/verdict.h"

#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "dumpsig/output.h"

namespace dumpsig {

namespace {

void pronounce(Verdict& verdict, Judgement judgement, const std::string& text) {
    verdict.judgement = judgement;
    verdict.text = oneLine(text);
}

/// The first of `keys` that made a signature, or null.
const PublicKey* findSigner(const brask::SignatureData& data, const brask::Digest& digest,
                            const std::vector<PublicKey>& keys) {
    for (const PublicKey& key : keys) {
        // Whatever is not 0 counts as good, as it does for backup_sign.
        if (brask::verifySignature(digest, data.signatureValue, key.key.get()) != 0) {
            return &key;
        }
    }
    return nullptr;
}

void judgeSignature(Verdict& verdict, const brask::SignatureData& data, const brask::Digest& digest,
                    const std::vector<PublicKey>& keys) {
    if (!brask::isDigestOf(data, digest)) {
        pronounce(verdict, Judgement::kDigestWrong, "Digest is wrong");
        return;
    }
    try {
        verdict.key = findSigner(data, digest, keys);
    } catch (const brask::Error<&brask::VerifyError>& e) {
        pronounce(verdict, Judgement::kSignatureWrong, e.GetText());
        return;
    }
    if (verdict.key != nullptr) {
        verdict.judgement = Judgement::kIntact;
    } else {
        pronounce(verdict, Judgement::kSignatureWrong, "Signature is wrong");
    }
}

void judgeDocument(Verdict& verdict, const std::string& document, const brask::Digest& digest,
                   const std::vector<PublicKey>& keys) {
    std::shared_ptr<brask::SignatureData> data;
    try {
        data = brask::parseSignXml(brask::openSignatureDocument(document));
    } catch (const brask::IExTraceable& e) {
        pronounce(verdict, Judgement::kSignatureUnreadable, e.GetText());
        return;
    }
    judgeSignature(verdict, *data, digest, keys);
}

} // namespace

Verdict judgeDump(const Volumes& volumes, const std::vector<PublicKey>& keys, const Sink& content,
                  const ByteCounter& progress) {
    Verdict verdict;
    const std::optional<Tail> tail = peekAtTail(volumes);
    if (tail && !findDocument(*tail)) {
        // No need to read hundreds of gigabytes for it.
        pronounce(verdict, Judgement::kNotSigned, kNotSigned);
        return verdict;
    }
    brask::Digest digest;
    std::uint64_t size = 0;
    const Sink hashed = [&](std::string_view bytes) {
        digest.update(bytes.data(), bytes.size());
        size += bytes.size();
        content(bytes);
    };
    const std::optional<FoundDocument> document = scanDump(volumes, hashed, progress);
    verdict.digest = hexadecimal(digest.getValue(), digest.getSize());
    if (!document) {
        pronounce(verdict, Judgement::kNotSigned, kNotSigned);
        return verdict;
    }
    verdict.signedBytes = size;
    verdict.documentOffset = document->offset;
    verdict.documentBytes = document->text.size();
    judgeDocument(verdict, document->text, digest, keys);
    return verdict;
}

} // namespace dumpsig
