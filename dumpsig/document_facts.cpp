#include "dumpsig/document_facts.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "dumpsig/output.h"
#include "dumpsig/scan.h"

namespace dumpsig {

namespace {

std::string decodeDigest(const std::string& base64) {
    int length = 0;
    const brask::MallocPtr<unsigned char> bytes(
        brask::base64Decode(base64.data(), static_cast<int>(base64.size()), &length));
    if (static_cast<std::size_t>(length) != brask::Digest().getSize()) {
        BRASK_THROW(brask::WrongSignatureDataError,
                    "Unable to read the signature: its digest is no SHA-1 value");
    }
    return hexadecimal(bytes.get(), static_cast<std::size_t>(length));
}

brask::RsaPtr composeKey(const brask::SignatureData& data) {
    brask::RsaPtr key(brask::readKeyValue(data.modulus, data.exponent));
    if (key == nullptr) {
        BRASK_THROW(brask::WrongSignatureDataError, "Unable to read the signature: its key is no number");
    }
    return key;
}

} // namespace

DocumentFacts readFacts(const FoundDocument& found) {
    const brask::tXmlBmmDocument document = brask::openSignatureDocument(found.text);
    const auto data = brask::parseSignXml(document);
    const brask::RsaPtr key = composeKey(*data);
    return {.offset = found.offset,
            .size = found.text.size(),
            .digest = decodeDigest(data->digestValue),
            .algorithm = brask::readAlgorithm(document),
            .keyBits = RSA_bits(key.get()),
            .keyFingerprint = brask::keyFingerprint(key.get()),
            .keyName = brask::readKeyName(document)};
}

std::string problemOf(const std::optional<FoundDocument>& document) {
    if (!document) {
        return kNotSigned;
    }
    try {
        brask::openSignatureDocument(document->text);
        return {};
    } catch (const brask::IExTraceable& e) {
        return e.GetText();
    }
}

} // namespace dumpsig
