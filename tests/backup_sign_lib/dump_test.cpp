#include "backup_sign_lib/utils.h"
#include "tests/support/support.h"

#include <libxml/xmlerror.h>

#include <random>
#include <regex>

namespace {

using namespace test_support;

/// Reads the whole stream in blocks of `block` bytes, each of them full but the last.
std::string readAll(const std::vector<std::string>& files, size_t limit, size_t block) {
    DumpFileStream stream(files, limit);
    std::string content;
    std::string buffer(block, '\0');
    while (const size_t count = stream.read(buffer.data(), block)) {
        EXPECT_EQ(content.size() % block, 0U) << "a short block in the middle";
        content.append(buffer, 0, count);
    }
    EXPECT_TRUE(stream.atEnd());
    return content;
}

TEST(DumpStream, IsTheConcatenationWithTheLastVolumeCutAtTheLimit) {
    const TempDir dir;
    std::string content(20000, '\0');
    std::generate(content.begin(), content.end(), std::mt19937(20));
    std::vector<std::string> files;
    std::string whole;
    // Empty volumes, and sizes round that of the library's own buffer.
    for (const size_t size : {0, 9, 4095, 0, 4096, 4097, 20000}) {
        files.push_back(dir.write("volume" + std::to_string(files.size()), content.substr(20000 - size)));
        whole += content.substr(20000 - size);
        for (const size_t block : {1, 9, 4096, 30000, 1048576}) {
            for (const size_t limit : {size_t{0}, size / 2, size, size + 5}) {
                const size_t cut = limit == 0 || limit > size ? 0 : size - limit;
                ASSERT_TRUE(readAll(files, limit, block) == whole.substr(0, whole.size() - cut))
                    << size << " " << limit << " " << block;
            }
        }
    }
}

TEST(DumpStream, VolumesThatCannotBeReadAreNamedOrEndTheStreamQuietly) {
    const TempDir dir;
    const std::string file = dir.write("file", "abc");
    fs::create_symlink("file", dir.path("good"));
    EXPECT_NO_THROW(checkFilesExistance({file, dir.path("good")}));
    EXPECT_THROW(checkFilesExistance({file, "/dev/null", "never looked at"}), Error<&IsNotRegularFileError>);
    const std::string missing = dir.path("missing");
    const auto read = [&] { readAll({file, missing, file}, 0, 10); };
    EXPECT_EQ(thrownText<Error<&SignError>>(read), "Cannot read file " + missing);
    EXPECT_EQ(readAll({file, dir.path()}, 0, 10), "abc"); // a directory opens and can't be read
}

TEST(DumpSignature, TheLastMarkerInTheTailIsFoundWithItsOffset) {
    const std::string marker = "<Signature xmlns=";
    const std::string tail = marker + std::string(4096 - marker.size(), ' ');
    const std::tuple<std::string, std::string, size_t> cases[] = {
        {marker, marker, 0},
        {marker + "1" + marker + "2", marker + "2", 18},
        {"dump" + tail, tail, 4},
        {"dump" + tail + " ", "", 0}, // the marker straddles the start of the range
    };
    const TempDir dir;
    for (const auto& [content, signature, offset] : cases) {
        size_t position = 77;
        EXPECT_EQ(readDumpSignature(dir.write("file", content), position), signature) << content;
        EXPECT_EQ(position, offset) << content;
    }
}

TEST(DumpSignature, EachTextOfTheDocumentCountsButTheSignersKey) {
    const TempDir dir;
    const std::vector<std::string> files{dir.write("dump", "some dump")};
    const auto [privateKey, publicKey] = generateServerKeypair();
    signDumpFile(files, privateKey, publicKey);
    const std::string good = readFile(files[0]);
    const std::tuple<std::string, size_t, std::string, std::string> cases[] = {
        {"<DigestValue>", 4, "", "Digest is wrong"},
        {"<SignatureValue>", 4, "QUJD", "Signature is wrong"},
        {"<SignatureValue>", 174, "", "Cannot base64 decode signature"},
        {"</Signature>", 0, std::string("\0junk", 5),
         "Unable to parse the signature: The XML file - was not parsed successfully with the following "
         "errors:\nEntity: line 26: parser error : Char 0x0 out of allowed range\n"},
    };
    for (const auto& [element, count, text, verdict] : cases) {
        dir.write("dump", std::string(good).replace(good.find(element) + element.size(), count, text));
        const auto verify = [&] { verifyDumpFile(files, publicKey); };
        EXPECT_EQ(thrownText<Error<&VerifyError>>(verify), verdict);
    }
    EXPECT_EQ(xmlGenericErrorContext, nullptr) << "the buffer of the failed parse is gone";
    dir.write("dump", std::string(good).replace(good.find("<Modulus>") + 9, 4, "QUJD"));
    EXPECT_NO_THROW(verifyDumpFile(files, publicKey)) << "a dump is verified with this server's own key";
}

std::shared_ptr<SignatureData> parse(const std::string& text) {
    tXmlBmmDocument document(text);
    document.initFileDoc(nullptr);
    return parseSignXml(document);
}

TEST(SignatureDocument, IsThatOfTheDataFileWithItsValuesInLinesOf71) {
    const auto [privateKey, publicKey] = generateServerKeypair();
    const std::string document = createSignatureDocument(Digest(), privateKey, publicKey);
    const std::regex value(">(([A-Za-z0-9+/]{71}\n)*[A-Za-z0-9+/=]{8,71})<");
    EXPECT_EQ(std::regex_replace(document, value, "><"),
              readFile(SOURCE_FOLDER "/tests/data/signature_document.xml"));
    EXPECT_EQ(document.size(), 1196U);
}

TEST(SignatureDocument, TextsAreTakenAsTheyStandAndTheFirstMissingElementIsNamed) {
    const std::string name = "<Signature xmlns='http://www.w3.org/2000/09/xmldsig#'>";
    const std::string digest =
        "<SignedInfo><Reference><DigestValue> d </DigestValue></Reference></SignedInfo>";
    const std::string value = "<SignatureValue>\ns&amp;</SignatureValue>";
    const std::string key = "<KeyInfo><RSAKeyValue><Exponent>e</Exponent><Modulus/></RSAKeyValue></KeyInfo>";
    const auto data = parse(name + key + value + digest + "</Signature>");
    EXPECT_EQ(data->digestValue + "|" + data->signatureValue + "|" + data->modulus + "|" + data->exponent,
              " d |\ns&||e");
    const std::pair<std::string, std::string> cases[] = {
        {name + digest + value + "<Modulus/>", "KeyInfo/n:RSAKeyValue/n:Modulus"},
        {name + digest + key, "SignatureValue"},
        {"<Signature>" + digest + value + key, "SignedInfo/n:Reference/n:DigestValue"},
    };
    for (const auto& [document, missing] : cases) {
        EXPECT_EQ(thrownText<Error<&WrongSignatureDataError>>([&] { parse(document + "</Signature>"); }),
                  "Requred XML element is absent: n:" + missing);
    }
}

} // namespace
