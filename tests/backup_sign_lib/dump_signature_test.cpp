#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>
#include <libxml/xmlerror.h>

namespace {

using namespace brask;

TEST(DumpSignature, TheLastMarkerInTheTailIsFoundWithItsOffset) {
    const std::string marker = "<Signature xmlns=";
    const std::string tail = marker + std::string(4096 - marker.size(), ' ');
    const std::tuple<std::string, std::string, size_t> cases[] = {
        {marker, marker, 0},
        {marker + "1" + marker + "2", marker + "2", 18},
        {"dump" + tail, tail, 4},
        {"dump" + tail + " ", "", 0}, // the marker straddles the start of the range
    };
    const test_support::TempDir dir;
    for (const auto& [content, signature, offset] : cases) {
        size_t position = 77;
        EXPECT_EQ(readDumpSignature(dir.write("file", content), position), signature) << content;
        EXPECT_EQ(position, offset) << content;
    }
}

TEST(DumpSignature, EachTextOfTheDocumentCountsButTheSignersKey) {
    const test_support::TempDir dir;
    const std::vector<std::string> files{dir.write("dump", "some dump")};
    const auto [privateKey, publicKey] = generateServerKeypair();
    signDumpFile(files, privateKey, publicKey);
    const std::string good = test_support::readFile(files[0]);
    const std::tuple<std::string, size_t, std::string, std::string> cases[] = {
        {"<DigestValue>", 4, "", "Digest is wrong"},
        {"<DigestValue>", 4, "QUJD", "Digest is wrong"},
        {"<SignatureValue>", 4, "QUJD", "Signature is wrong"},
        {"<SignatureValue>", 174, "", "Cannot base64 decode signature"},
        {"</Signature>", 0, std::string("\0junk", 5),
         "Unable to parse the signature: The XML file - was not parsed successfully with the following "
         "errors:\nEntity: line 26: parser error : Char 0x0 out of allowed range\n"},
    };
    for (const auto& [element, count, text, verdict] : cases) {
        dir.write("dump", std::string(good).replace(good.find(element) + element.size(), count, text));
        const auto verify = [&] { verifyDumpFile(files, publicKey); };
        EXPECT_EQ(test_support::thrownText<Error<&VerifyError>>(verify), verdict);
    }
    EXPECT_EQ(xmlGenericErrorContext, nullptr) << "the buffer of the failed parse is gone";
    dir.write("dump", std::string(good).replace(good.find("<Modulus>") + 9, 4, "QUJD"));
    EXPECT_NO_THROW(verifyDumpFile(files, publicKey)) << "a dump is verified with this server's own key";
}

} // namespace
