#include "backup_sign_lib/backup_sign.h"
#include "commons/xml_document.h"
#include "tests/support/child.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>

namespace {

using namespace brask;
using test_support::inChild;
using test_support::readFile;

class LegacyXml : public testing::Test {
protected:
    static std::string bytes(size_t size) {
        std::string text(size, '\0');
        for (size_t i = 0; i < size; ++i) {
            text[i] = static_cast<char>(i * 7 + i / 256);
        }
        return text;
    }

    test_support::TempDir dir;
    BackupSign sign;
};

TEST_F(LegacyXml, SigningCopiesFilesByteForByte) {
    for (const size_t size : {0, 1, 4095, 4096, 4097, 8192, 100001}) {
        sign.SignXml(dir.write("in", bytes(size)), dir.path("out"));
        EXPECT_TRUE(readFile(dir.path("out")) == bytes(size)) << size;
    }
}

TEST_F(LegacyXml, EmptyNamesMeanTheStandardStreamsAndCloseThem) {
    const std::string input = dir.write("in", bytes(10000));
    const auto outcome = inChild([&] {
        dup2(open(input.c_str(), O_RDONLY), STDIN_FILENO);
        sign.SignXml("", "");
        if (fcntl(STDIN_FILENO, F_GETFD) < 0 && fcntl(STDOUT_FILENO, F_GETFD) < 0) {
            fputs("closed", stderr);
        }
    });
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.out == bytes(10000));
    EXPECT_EQ(outcome.err, "closed");
}

TEST_F(LegacyXml, AFailedWriteEndsTheCopyInSilence) {
    EXPECT_NO_THROW(sign.SignXml(dir.write("in", bytes(100000)), "/dev/full"));
}

TEST_F(LegacyXml, AMissingInputEndsTheProcess) {
    const auto outcome = inChild([&] {
        const rlimit noCore{};
        setrlimit(RLIMIT_CORE, &noCore);
        sign.SignXml(dir.path("missing"), dir.path("out"));
    });
    // The address sanitizer turns the signal into exit code 1.
    EXPECT_TRUE(outcome.signal == SIGSEGV || outcome.exitCode == 1) << outcome.exitCode << outcome.err;
}

TEST_F(LegacyXml, VerifyingTakesAMigrationDumpOutOfItsEnvelope) {
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

    const struct {
        std::string input;
        std::string output;
    } cases[] = {
        {"<Envelope xmlns='urn:envelope'><Data>\n<migration-dump v='1'><a/>\xC3\xA4</migration-dump>\n"
         "</Data><Sign/></Envelope>",
         "<migration-dump v=\"1\"><a/>\xC3\xA4</migration-dump>\n"},
        {"<e:Envelope xmlns:e='urn:envelope' xmlns:o='urn:other'><e:Data>"
         "<e:migration-dump o:x='y'><e:a/></e:migration-dump></e:Data></e:Envelope>",
         "<migration-dump xmlns:o=\"urn:other\" o:x=\"y\"><a/></migration-dump>\n"},
        // Another namespace, another place or another root: the document as it is.
        {"<Envelope><Data><migration-dump/></Data></Envelope>",
         "<Envelope><Data><migration-dump/></Data></Envelope>\n"},
        {"<Envelope xmlns='urn:envelope'><migration-dump/></Envelope>",
         "<Envelope><migration-dump/></Envelope>\n"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><any a='\xE4'> t </any>",
         "<any a=\"\xC3\xA4\"> t </any>\n"},
    };

    for (const auto& [input, output] : cases) {
        const std::string file = dir.write("in", input);
        sign.VerifyXml(file, dir.path("out"));
        EXPECT_EQ(readFile(dir.path("out")), declaration + output) << input;
        EXPECT_EQ(inChild([&] { sign.VerifyXml(file, ""); }).out, declaration + output) << input;
    }
}

TEST_F(LegacyXml, VerifyingReportsAnOutputThatCannotBeWritten) {
    const std::string path = dir.path("no/such/folder");
    EXPECT_EQ(test_support::thrownText<Error<&tError_SaveFile>>(
                  [&] { sign.VerifyXml(dir.write("in", "<a/>"), path); }),
              "Cannot save the XML document to file '" + path + "'");
}

} // namespace
