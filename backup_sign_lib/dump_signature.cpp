#include "backup_sign_lib/dump_signature.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/dump_file_stream.h"
#include "backup_sign_lib/malloc_ptr.h"
#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "commons/xml/xml_error_handlers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <string_view>

namespace brask {

namespace {

/// How much of the end of a volume may be signature.
constexpr std::streamoff kTailRange = 4096;

/// What a signature document begins with.
constexpr std::string_view kMarker = "<Signature xmlns=";

std::shared_ptr<SignatureData> parseSignature(const std::string& signature) {
    // Who asks whether a signature is valid goes on when it is not.
    const XmlErrorsReset reset;
    try {
        tXmlBmmDocument document(signature);
        document.initFileDoc("Signature");
        return parseSignXml(document);
    } catch (const Error<&tError_ParseFile>& e) {
        BRASK_THROW(VerifyError, formatMessage("Unable to parse the signature: {}", e.GetText()));
    }
}

bool isValueOf(const Digest& digest, const std::string& base64) {
    int length = 0;
    const MallocPtr<unsigned char> value(
        base64Decode(base64.data(), static_cast<int>(base64.size()), &length));
    return static_cast<size_t>(length) == digest.getSize() &&
           std::memcmp(value.get(), digest.getValue(), digest.getSize()) == 0;
}

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
    const std::shared_ptr<SignatureData> data = parseSignature(signature);
    if (!isValueOf(digest, data->digestValue)) {
        BRASK_THROW(VerifyError, "Digest is wrong");
    }
    if (verifySignature(digest, data->signatureValue, publicKey) == 0) {
        BRASK_THROW(VerifyError, "Signature is wrong");
    }
}

std::string readDumpSignature(const std::string& path, size_t& position) {
    position = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return {};
    }
    std::array<char, kTailRange> tail{};
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    const std::streamoff count = std::min(size, kTailRange);
    file.seekg(size - count);
    file.read(tail.data(), count);
    const auto match = std::find_end(tail.begin(), tail.end(), kMarker.begin(), kMarker.end());
    if (match == tail.end()) {
        return {};
    }
    position = static_cast<size_t>(match - tail.begin() + size - count);
    return {match, tail.begin() + count};
}

} // namespace brask
