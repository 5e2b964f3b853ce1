#include "commons/backup_settings.h"
#include "commons/file_guards.h"
#include "commons/file_utils.h"
#include "tests/support/fixed_params.h"
#include "tests/support/recording_log.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::FixedParams;
using test_support::RecordingLog;
using test_support::TempDir;
using ::testing::ElementsAre;
using ::testing::StartsWith;
namespace fs = std::filesystem;

class FileGuards : public ::testing::Test {
protected:
    FileGuards() {
        dir.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts = 1\n");
        BackupSettings::instance(); // the first to ask has it noted in the log
        log.lines.clear();
    }

    TempDir dir;
    FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}}};
    RecordingLog log;
};

TEST_F(FileGuards, RemoveAndCloseWhatTheyOwn) {
    const int fd = open(dir.write("file", "").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    dir.write("folder/inner/file", "");
    {
        const TempFileGuard file(dir.path("file"), fd);
        const TempDirGuard folder(dir.path("folder"));
    }
    EXPECT_FALSE(fs::exists(dir.path("file")));
    EXPECT_FALSE(fs::exists(dir.path("folder")));
    EXPECT_EQ(close(fd), -1);
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(FileGuards, KeepWhatWasReleasedAndForgiveWhatIsGone) {
    {
        TempFileGuard file(dir.write("file", ""));
        TempDirGuard folder(dir.path());
        file.path.clear();
        folder.path.clear();
        const TempFileGuard goneFile(dir.path("gone"));
        const TempDirGuard goneFolder(dir.path("gone"));
        removeFileLogged("");
    }
    EXPECT_TRUE(fs::exists(dir.path("file")));
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(FileGuards, LogWhatTheyCannotRemove) {
    dir.write("folder/file", "");
    const std::string tooLong = dir.path(std::string(5000, 'x'));
    EXPECT_THROW(RemoveFile(dir.path("folder")), fs::filesystem_error);
    { const TempFileGuard file(dir.path("folder")); }
    { const TempDirGuard folder(tooLong); }
    removeFileLogged(dir.path("folder"));
    const std::string start = "Unable to delete the file '" + dir.path("folder") + "': ";
    EXPECT_THAT(log.lines, ElementsAre(StartsWith(start),
                                       StartsWith("Unable to delete the directory '" + tooLong + "': "),
                                       StartsWith(start)));
    EXPECT_TRUE(fs::exists(dir.path("folder/file")));
}

} // namespace
