#include "commons/file_guards.h"
#include "commons/file_utils.h"
#include "commons/rename.h"
#include "commons/retry.h"
#include "tests/commons/library_test.h"

#include <fcntl.h>

namespace {

using namespace brask;
using namespace test_support;
using testing::StartsWith;
namespace fs = std::filesystem;

TEST(Retry, CallsUntilItSucceedsOrAttemptsRunOutAndSleepsBetweenCalls) {
    int calls = 0;
    const auto failFourTimes = [&calls] {
        if (++calls <= 4) {
            throw calls;
        }
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(retry(failFourTimes, 3, 20), int);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
    retry(failFourTimes, 0, 600000);
    EXPECT_EQ(calls, 3);
    EXPECT_THROW(retry(failFourTimes, 1, 600000), int);
    retry(failFourTimes, 2, 600000);
    EXPECT_EQ(calls, 5);
}

using FileUtils = LibraryTest;

TEST_F(FileUtils, NewDirectoriesHaveOneModeAndCopiesAllBytes) {
    const mode_t before = umask(022);
    make_dir(dir.path("a//b/"), geteuid(), getegid(), 0770);
    make_dir(dir.write("file", "content") + "/below", 1, 1, 0777);
    umask(before);
    EXPECT_EQ(statFile(dir.path("a")).st_mode & 07777, 0750U);
    EXPECT_EQ(statFile(dir.path("a/b")).st_mode & 07777, 0750U);
    EXPECT_EQ(statFile(dir.path()).st_mode & 07777, 0700U);
    EXPECT_EQ(readFile(dir.path("file")), "content");

    const std::string content(300001, 'x');
    const int from = open(dir.write("from", content).c_str(), O_RDONLY | O_CLOEXEC);
    const int to = open(dir.path("to").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    copyData(from, to);
    EXPECT_EQ(readFile(dir.path("to")), content);
    EXPECT_THROW(copyData(to, from), std::system_error);
}

TEST_F(FileUtils, GuardsRemoveWhatTheyOwnAndLogWhatTheyCannot) {
    const int fd = open(dir.write("file", "").c_str(), O_RDONLY | O_CLOEXEC);
    dir.write("folder/inner/file", "");
    dir.write("occupied/file", "");
    dir.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts = 1\n");
    {
        const TempFileGuard file(dir.path("file"), fd);
        const TempDirGuard folder(dir.path("folder"));
        const TempFileGuard occupied(dir.path("occupied"));
    }
    EXPECT_EQ(close(fd), -1);
    EXPECT_FALSE(fs::exists(dir.path("file")) || fs::exists(dir.path("folder")));
    EXPECT_THAT(log.lines.back(), StartsWith("Unable to delete the file '" + dir.path("occupied") + "': "));
}

class FileSystems : public LibraryTest {
protected:
    void SetUp() override {
        if (statFile(dir.path()).st_dev == statFile(there.path()).st_dev) {
            GTEST_SKIP() << "the temporary directory and /dev/shm are one file system";
        }
    }

    TempDir there{"/dev/shm"};
};

TEST_F(FileSystems, AFileIsMovedFromOneToTheOtherUnlessTheTargetExists) {
    const std::string from = dir.write("from", "new");
    const std::string to = there.write("to", "old");
    EXPECT_THAT(thrownText<Error<&CantRenameFile>>([&] { brask::rename(from, to); }),
                StartsWith("Cannot rename " + from + " to " + to + ": "));
    EXPECT_EQ(readFile(from) + readFile(to), "newold");
    fs::remove(to);
    brask::rename(from, to);
    EXPECT_EQ(readFile(to), "new");
    EXPECT_FALSE(fs::exists(from));
}

TEST_F(FileSystems, ATreeIsCopiedOrMovedFromOneToTheOther) {
    const std::string from = dir.path("from");
    dir.write("from/file", "content");
    dir.write("from/inner/run", "");
    fs::create_symlink("nowhere", from + "/link");
    fs::permissions(from + "/inner", fs::perms(0750));
    const auto move = [](const fs::path& source, const fs::path& target, bool) {
        brask::rename(source, target);
    };
    for (const auto carry : {copyDirectory, copyDirectoryRecursively, +move}) {
        const TempDir parent(there.path());
        const std::string to = parent.path("to");
        parent.write("to/file", "old");
        if (carry != +move) {
            EXPECT_THROW(carry(from, to, false), fs::filesystem_error);
        }
        carry(from, to, true);
        EXPECT_EQ(readFile(to + "/file"), "content");
        EXPECT_EQ(fs::read_symlink(to + "/link"), "nowhere");
        EXPECT_EQ(statFile(to + "/inner").st_mode & 0777, 0750U);
        EXPECT_TRUE(fs::exists(to + "/inner/run"));
    }
    EXPECT_FALSE(fs::exists(from));
}

} // namespace
