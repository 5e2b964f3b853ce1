#include "commons/backup_settings.h"
#include "commons/retry.h"
#include "commons/settings_parser.h"
#include "tests/support/fixed_params.h"
#include "tests/support/recording_log.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>

namespace {

using namespace brask;
using test_support::FixedParams;
using test_support::RecordingLog;
using test_support::TempDir;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Every value by its name, in order, as a settings file has it.
std::string describe(const BackupSettings::Values& values) {
    std::ostringstream text;
    text << std::boolalpha;
#define DESCRIBE(type, name, defaultValue) text << #name << " = " << values.name << "\n";
    BRASK_BACKUP_SETTINGS(DESCRIBE)
#undef DESCRIBE
    return text.str();
}

class BackupSettingsFile : public ::testing::Test {
protected:
    BackupSettings::Values readText(const std::string& text) {
        return BackupSettings(dir.write("panel.ini", text)).all();
    }

    TempDir dir;
    RecordingLog log;
    const std::string defaults = describe({});
    const std::string note = "Load settings from " + dir.path("panel.ini");
};

TEST_F(BackupSettingsFile, IsOptional) {
    EXPECT_EQ(describe(BackupSettings(dir.path("panel.ini")).all()), defaults);
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(BackupSettingsFile, OverridesOnlyWhatItNamesInItsSection) {
    EXPECT_EQ(describe(readText("")), defaults);
    BackupSettings::Values expected;
    expected.ftpFileTransferTimeout = -1;
    expected.localPauseBetweenAttempts = 100;
    expected.ioBufferSize = 1UL << 40;
    expected.archiverMaxThreads = 4294967295;
    expected.restoreModificationTime = false;
    EXPECT_EQ(describe(readText("ftpMaxResumeAttempts = 9\n[other]\nftpMaxResumeAttempts = 9\n"
                                "[bmm]\nunknown = 9\nlocalpausebetweenattempts = 9\n"
                                "ftpFileTransferTimeout = -1\nlocalPauseBetweenAttempts = 100 ; ms\n"
                                "ioBufferSize = 1099511627776\narchiverMaxThreads = 4294967295\n"
                                "restoreModificationTime = Off\n")),
              describe(expected));
    EXPECT_THAT(log.lines, ElementsAre(note, note));
}

TEST_F(BackupSettingsFile, GivesWhatStandsBeforeABadNumber) {
    BackupSettings::Values expected;
    expected.ftpMaxResumeAttempts = 1;
    expected.ftpPauseBetweenAttempts = 2;
    EXPECT_EQ(describe(readText("[bmm]\nftpMaxResumeAttempts = 1\nftpPauseBetweenAttempts = 2\n"
                                "ftpFileTransferTimeout = x\nftpRequestTimeout = 4\n")),
              describe(expected));
    EXPECT_EQ(describe(readText("[bmm]\narchiverMaxThreads = 4294967296\n")), defaults);
    EXPECT_THAT(log.lines,
                ElementsAre(note,
                            "Unable to read backup settings, default settings will be used instead. "
                            "Details: stol",
                            note,
                            "Unable to read backup settings, default settings will be used instead. "
                            "Details: '4294967296' is out of range of 'unsigned int' type"));
}

TEST_F(BackupSettingsFile, IsDroppedWholeOnASyntaxError) {
    EXPECT_EQ(describe(readText("[bmm]\nftpMaxResumeAttempts = 1\n[x\n")), defaults);
    EXPECT_THAT(log.lines.back(),
                "Unable to read backup settings, default settings will be used instead. Details: "
                "Parse error: Expected ']', found '<EOL>': Line 3, column 3");
}

TEST_F(BackupSettingsFile, NeverFailsTheCaller) {
    EXPECT_EQ(describe(BackupSettings(dir.path()).all()), defaults);
    EXPECT_THAT(log.lines.back(), HasSubstr("Details: Unable to read characters"));

    std::filesystem::create_symlink("loop", dir.path("loop"));
    EXPECT_EQ(describe(BackupSettings(dir.path("loop")).all()), defaults);

    std::string bytes;
    for (int i = 0; i < 200000; ++i) {
        bytes += static_cast<char>(i * i % 251);
    }
    EXPECT_EQ(describe(readText(bytes)), defaults);
}

TEST(ShippedSettingsFile, ListsEveryValueAtItsDefaultAndSetsNone) {
    const std::string text = test_support::readFile(SHIPPED_PANEL_INI);
    EXPECT_TRUE(SettingsParser().parse(text).empty());

    const std::regex commentedOut("(^|\n);(\\w+ = )");
    EXPECT_EQ(SettingsParser().parse(std::regex_replace(text, commentedOut, "$1$2")),
              SettingsParser().parse("[bmm]\n" + describe({})));
}

/// 0 if a process whose panel.ini sets `attempts` reads it once and calls a failing operation `expected`
/// times.
int checkProcessWithAttempts(const std::string& attempts, int expected) {
    const TempDir root;
    const FixedParams params({{"PRODUCT_ROOT_D", root.path()}});
    root.write("admin/conf/panel.ini",
               "[bmm]\nlocalPauseBetweenAttempts=-1\nlocalMaxFieIoAttempts=" + attempts);
    const bool read = BackupSettings::localPauseBetweenAttempts() == -1;
    root.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts=7");
    int calls = 0;
    try {
        retryFileOperation([&calls] { throw ++calls; });
    } catch (int) {
        return read && calls == expected && BackupSettings::localPauseBetweenAttempts() == -1 ? 0 : 1;
    }
    return read && expected == 0 && calls == 0 ? 0 : 1;
}

TEST(BackupSettingsOfTheProcess, AreReadOnceAndRuleTheRetries) {
    // A process of its own for each case: the settings are read once.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exit(checkProcessWithAttempts("2", 2)), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit(checkProcessWithAttempts("0", 0)), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit(checkProcessWithAttempts("-5", 0)), ::testing::ExitedWithCode(0), "");
}

} // namespace
