#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/signature_document.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

namespace {

using namespace brask;
using test_support::readFile;
using Files = std::vector<std::string>;

constexpr size_t kDocumentSize = 1196;

class DumpSignature : public testing::Test {
protected:
    static void SetUpTestSuite() { keys() = generateServerKeypair(); }

    static std::pair<std::string, std::string>& keys() {
        static std::pair<std::string, std::string> pair;
        return pair;
    }

    Files write(const std::vector<std::string>& contents) const {
        Files files;
        for (const std::string& content : contents) {
            files.push_back(dir.write("volume" + std::to_string(files.size()), content));
        }
        return files;
    }

    Files signedDump(const std::vector<std::string>& contents) const {
        Files files = write(contents);
        signDumpFile(files, keys().first, keys().second);
        return files;
    }

    /// What verifying says; "good" if nothing.
    static std::string verdict(const Files& files, const std::string& publicKey = keys().second) {
        try {
            verifyDumpFile(files, publicKey);
        } catch (const ExTraceableBase<ExDefault>& e) {
            return e.GetText();
        }
        return "good";
    }

    static void append(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::binary | std::ios::app) << text;
    }

    test_support::TempDir dir;
};

TEST_F(DumpSignature, SigningAppendsADocumentToTheLastVolumeAndTouchesNothingElse) {
    const Files files = signedDump({"first", "", std::string(5000, 'x')});
    EXPECT_EQ(readFile(files[0]), "first");
    EXPECT_EQ(readFile(files[1]), "");
    Digest digest;
    const std::string content = "first" + std::string(5000, 'x');
    digest.update(content.data(), content.size());
    EXPECT_EQ(readFile(files[2]),
              std::string(5000, 'x') + createSignatureDocument(digest, keys().first, keys().second));
    EXPECT_EQ(verdict(files), "good");
}

TEST_F(DumpSignature, HoldsForTheSameBytesHoweverCutAndForADumpSignedTwice) {
    const Files files = signedDump({"first", "second"});
    const std::string whole = readFile(files[0]) + readFile(files[1]);
    EXPECT_EQ(verdict({dir.write("one", whole)}), "good");
    EXPECT_EQ(verdict({dir.write("a", "fi"), dir.write("b", ""), dir.write("c", whole.substr(2))}), "good");

    signDumpFile(files, keys().first, keys().second);
    EXPECT_EQ(readFile(files[1]).size(), 6 + 2 * kDocumentSize);
    EXPECT_EQ(verdict(files), "good");
}

TEST_F(DumpSignature, EveryByteInFrontOfTheSignatureCounts) {
    const Files files = signedDump({"first", "second"});
    for (const std::string& file : files) {
        const std::string good = readFile(file);
        for (size_t i = 0; i < (file == files[0] ? 5 : 6); ++i) {
            std::string bad = good;
            bad[i] ^= 1;
            std::ofstream(file, std::ios::binary) << bad;
            EXPECT_EQ(verdict(files), "Digest is wrong") << file << " at " << i;
        }
        std::ofstream(file, std::ios::binary) << good;
    }
    EXPECT_EQ(verdict(files), "good");
}

TEST_F(DumpSignature, EachWayOfTamperingHasItsText) {
    const std::string absent = "Requred XML element is absent: ";

    const struct {
        const char* what;
        std::function<void(std::string&)> tamper; // changes the last volume, "second" and the document
        std::string verdict;                      // or what it begins with
    } cases[] = {
        {"cut off at the start of the signature", [](auto& v) { v.resize(6); }, "Dump is not signed"},
        {"cut off inside", [](auto& v) { v.resize(600); },
         "Unable to parse the signature: The XML file - was not parsed successfully with the following "
         "errors:\n"},
        {"text behind it", [](auto& v) { v += "x"; },
         "Unable to parse the signature: The XML file - was not parsed successfully with the following "
         "errors:\n"},
        {"a line feed behind it", [](auto& v) { v += "\n"; }, "good"},
        {"pushed out of the tail range", [](auto& v) { v += std::string(4096 - kDocumentSize + 1, '\n'); },
         "Dump is not signed"},
        {"just within the tail range", [](auto& v) { v += std::string(4096 - kDocumentSize, '\n'); }, "good"},
        {"another root that begins alike", [](auto& v) { v = "<Signature xmlns=''/>"; },
         absent + "n:SignedInfo/n:Reference/n:DigestValue"},
        {"an element renamed",
         [](auto& v) {
             v.replace(v.find("<Exponent>"), 10, "<exponent>")
                 .replace(v.find("</Exponent>"), 11, "</exponent>");
         },
         absent + "n:KeyInfo/n:RSAKeyValue/n:Exponent"},
        {"a longer digest", [](auto& v) { v.insert(v.find("</DigestValue>"), "QUJD"); }, "good"},
        {"no digest", [](auto& v) { v.erase(v.find("<DigestValue>") + 13, 28); }, "Digest is wrong"},
        {"a shorter digest", [](auto& v) { v.erase(v.find("<DigestValue>") + 13, 4); }, "Digest is wrong"},
        {"another digest", [](auto& v) { v.replace(v.find("<DigestValue>") + 13, 4, "QUJD"); },
         "Digest is wrong"},
        {"no signature value", [](auto& v) { v.erase(v.find("<SignatureValue>") + 16, 174); },
         "Cannot base64 decode signature"},
        {"another signature value", [](auto& v) { v.replace(v.find("<SignatureValue>") + 16, 4, "QUJD"); },
         "Signature is wrong"},
        {"a shorter signature value", [](auto& v) { v.erase(v.find("<SignatureValue>") + 16, 4); },
         "Signature is wrong"},
        {"another modulus, which nobody looks at",
         [](auto& v) { v.replace(v.find("<Modulus>") + 9, 4, "QUJD"); }, "good"},
    };

    for (const auto& [what, tamper, expected] : cases) {
        const Files files = signedDump({"first", "second"});
        std::string volume = readFile(files[1]);
        tamper(volume);
        dir.write("volume1", volume);
        EXPECT_THAT(verdict(files), testing::StartsWith(expected)) << what;
    }
}

TEST_F(DumpSignature, VolumesMissingSwappedOrForeignAreFound) {
    const Files files = signedDump({"first", "second", "third"});
    EXPECT_EQ(verdict({files[1], files[0], files[2]}), "Digest is wrong");
    EXPECT_EQ(verdict({files[2]}), "Digest is wrong");
    EXPECT_EQ(verdict({files[0], files[2], files[1]}), "Dump is not signed");
    EXPECT_EQ(verdict(files, generateServerKeypair().second), "Signature is wrong");
    EXPECT_EQ(verdict(files, "no key"), "Cannot create RSA public key instance");
    EXPECT_EQ(verdict({files[0], dir.path("missing")}), "File " + dir.path("missing") + " not found");
    EXPECT_EQ(verdict({dir.path(), files[2]}), dir.path() + " is not regular file");
}

TEST_F(DumpSignature, ASignatureThatBeginsItsVolumeDoesNotHold) {
    EXPECT_EQ(verdict(signedDump({"first", ""})), "Digest is wrong");
}

TEST_F(DumpSignature, AFailedSigningLeavesTheVolumesAsTheyWere) {
    const Files files = write({"first", "second"});
    const auto refused = [&](const Files& dump, const std::string& privateKey) -> std::string {
        try {
            signDumpFile(dump, privateKey, keys().second);
        } catch (const ExTraceableBase<ExDefault>& e) {
            return e.GetText();
        }
        return "signed";
    };
    EXPECT_EQ(refused(files, "no key"), "Can't initialize RSA private key");
    EXPECT_EQ(refused({files[0], dir.path("missing")}, keys().first),
              "File " + dir.path("missing") + " not found");
    // A regular file that nobody, root included, can open for writing.
    EXPECT_EQ(refused({files[0], "/proc/version"}, keys().first), "Unable to save sign to/proc/version");
    EXPECT_EQ(readFile(files[0]) + readFile(files[1]), "firstsecond");
}

TEST_F(DumpSignature, TheLastMarkerInTheTailIsFoundWithItsOffset) {
    const std::string marker = "<Signature xmlns=";
    size_t position = 77;
    const auto found = [&](const std::string& content) {
        return readDumpSignature(dir.write("file", content), position);
    };
    EXPECT_EQ(found(marker + "1" + marker + "2"), marker + "2");
    EXPECT_EQ(position, 18U);
    EXPECT_EQ(found(marker), marker);
    EXPECT_EQ(position, 0U);

    const std::string tail = marker + std::string(4096 - marker.size(), ' ');
    EXPECT_EQ(found("dump" + tail), tail);
    EXPECT_EQ(position, 4U);
    // One byte more, and the marker straddles the start of the range.
    EXPECT_EQ(found("dump" + tail + " "), "");
    EXPECT_EQ(position, 0U);

    EXPECT_EQ(found(""), "");
    EXPECT_EQ(found("<Signature xmlns"), "");
    EXPECT_EQ(readDumpSignature(dir.path("missing"), position), "");
    EXPECT_EQ(readDumpSignature(dir.path(), position), "");
}

TEST_F(DumpSignature, ARootOfAnotherKindIsNoSignature) {
    try {
        verifyDumpFile("<Other/>", Digest(), keys().second);
        FAIL();
    } catch (const Error<&tError_WrongDoc>& e) {
        EXPECT_STREQ(
            e.GetText(),
            "The document has the wrong type, the root node is <Other>, but <Signature> was expected");
    }
}

} // namespace
