#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <boost/algorithm/string/replace.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace brask;
using test_support::readFile;
using test_support::thrownText;
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
    const std::string good[] = {readFile(files[0]), readFile(files[1])};
    for (size_t i = 0; i < 11; ++i) {
        std::string bad[] = {good[0], good[1]};
        (i < 5 ? bad[0][i] : bad[1][i - 5]) ^= 1;
        EXPECT_EQ(verdict(write({bad[0], bad[1]})), "Digest is wrong") << i;
    }
}

TEST_F(DumpSignature, EachWayOfTamperingHasItsText) {
    const std::string end = "</Signature>";
    const std::string unparsable =
        "Unable to parse the signature: The XML file - was not parsed successfully "
        "with the following errors:\n";
    const std::string absent = "Requred XML element is absent: ";

    const struct {
        std::string from;
        std::string to;
        std::string verdict; // or what it begins with
    } cases[] = {
        {end, "", unparsable},
        {end, end + "x", unparsable},
        {end, end + "\n", "good"},
        {end, end + std::string(4096 - kDocumentSize, '\n'), "good"},
        {end, end + std::string(4096 - kDocumentSize + 1, '\n'), "Dump is not signed"},
        {"xmldsig#\">", "xmldsig\">", absent + "n:SignedInfo/n:Reference/n:DigestValue"},
        {"Exponent>", "exponent>", absent + "n:KeyInfo/n:RSAKeyValue/n:Exponent"},
        {"<DigestValue>", "<DigestValue>QUJD", "Digest is wrong"},
        {"<DigestValue>", "<DigestValue>====", "Digest is wrong"},
        {"</DigestValue>", "QUJD</DigestValue>", "good"}, // padding ended it
        {"<SignatureValue>", "<SignatureValue>QUJD", "Signature is wrong"},
        {"<Modulus>", "<Modulus>QUJD", "good"}, // nobody looks at it
    };

    const Files files = signedDump({"first", "second"});
    const std::string volume = readFile(files[1]);
    for (const auto& [from, to, expected] : cases) {
        dir.write("volume1", boost::algorithm::replace_all_copy(volume, from, to));
        EXPECT_THAT(verdict(files), testing::StartsWith(expected)) << from << " -> " << to;
    }
}

TEST_F(DumpSignature, VolumesMissingSwappedOrForeignAreFound) {
    EXPECT_EQ(verdict(signedDump({"first", ""})), "Digest is wrong"); // a signature that begins its volume
    const Files files = signedDump({"first", "second", "third"});
    EXPECT_EQ(verdict({files[1], files[0], files[2]}), "Digest is wrong");
    EXPECT_EQ(verdict({files[2]}), "Digest is wrong");
    EXPECT_EQ(verdict({files[0], files[2], files[1]}), "Dump is not signed");
    EXPECT_EQ(verdict(files, generateServerKeypair().second), "Signature is wrong");
    EXPECT_EQ(verdict(files, "no key"), "Cannot create RSA public key instance");
    EXPECT_EQ(verdict({files[0], dir.path("missing")}), "File " + dir.path("missing") + " not found");
    EXPECT_EQ(verdict({dir.path(), files[2]}), dir.path() + " is not regular file");
}

TEST_F(DumpSignature, AFailedSigningLeavesTheVolumesAsTheyWere) {
    const Files files = write({"first", "second"});
    const auto refusal = [&](const Files& dump, const std::string& privateKey) {
        return thrownText<Error<&SignError>>([&] { signDumpFile(dump, privateKey, keys().second); });
    };
    EXPECT_EQ(refusal(files, "no key"), "Can't initialize RSA private key");
    // A regular file that nobody, root included, can open for writing.
    EXPECT_EQ(refusal({files[0], "/proc/version"}, keys().first), "Unable to save sign to/proc/version");
    EXPECT_EQ(readFile(files[0]) + readFile(files[1]), "firstsecond");
}

TEST_F(DumpSignature, TheLastMarkerInTheTailIsFoundWithItsOffset) {
    const std::string marker = "<Signature xmlns=";
    const std::string tail = marker + std::string(4096 - marker.size(), ' ');

    const struct {
        std::string content;
        std::string signature;
        size_t position;
    } cases[] = {
        {marker + "1" + marker + "2", marker + "2", 18},
        {"dump" + tail, tail, 4},
        {"dump" + tail + " ", "", 0}, // the marker straddles the start of the range
        {"<Signature xmlns", "", 0},
        {"", "", 0},
    };

    for (const auto& [content, signature, expected] : cases) {
        size_t position = 77;
        EXPECT_EQ(readDumpSignature(dir.write("file", content), position), signature) << content;
        EXPECT_EQ(position, expected) << content;
    }
    size_t position = 77;
    EXPECT_EQ(readDumpSignature(dir.path("missing"), position), "");
    EXPECT_EQ(position, 0U);
}

TEST_F(DumpSignature, ARootOfAnotherKindIsNoSignature) {
    EXPECT_EQ(
        thrownText<Error<&tError_WrongDoc>>([] { verifyDumpFile("<Other/>", Digest(), keys().second); }),
        "The document has the wrong type, the root node is <Other>, but <Signature> was expected");
}

} // namespace
