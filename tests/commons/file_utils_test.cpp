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
    const auto start = std::chrono::steady_clock::now();
    const int cases[][4] = {{0, 2, 60000, 1}, {2, 3, 20, 3}, {1, 1, 60000, 1}, {1, 0, 0, 0}};
    for (const auto& [failures, attempts, pause, expected] : cases) {
        int calls = 0;
        const auto failAtFirst = [&calls, failures = failures] {
            if (++calls <= failures) {
                throw std::runtime_error("once more");
            }
        };
        try {
            retry(failAtFirst, static_cast<unsigned>(attempts), static_cast<unsigned>(pause));
        } catch (const std::runtime_error&) {
            EXPECT_EQ(calls, attempts);
        }
        EXPECT_EQ(calls, expected);
    }
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(took >= std::chrono::milliseconds(40) && took < std::chrono::seconds(30));
}

class FileUtils : public LibraryTest {};

TEST_F(FileUtils, NewDirectoriesHaveOneModeAndWhatIsThereIsLeftAlone) {
    const mode_t before = umask(022);
    make_dir(dir.path("a/b//c/"), geteuid(), getegid(), 0770);
    make_dir(dir.write("file", "content") + "/below", 1, 1, 0777);
    umask(before);
    for (const char* name : {"a", "a/b", "a/b/c"}) {
        EXPECT_EQ(statFile(dir.path(name)).st_mode & 07777, 0750U) << name;
    }
    EXPECT_EQ(readFile(dir.path("file")), "content");
    EXPECT_EQ(statFile(dir.path()).st_mode & 07777, 0700U);
    EXPECT_EQ(thrownText<Error<&CantStatFS>>([&] { getFreeSpace("/missing"); }),
              "Cannot stat filesystem containing /missing: No such file or directory");
    EXPECT_GT(getFreeSpace(dir.path()), 0U);
}

TEST_F(FileUtils, CopiesAndComparesWholeStreams) {
    const std::string content(300001, 'x');
    const int from = open(dir.write("from", content).c_str(), O_RDONLY | O_CLOEXEC);
    const int to = open(dir.path("to").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    copyData(from, to);
    std::ifstream copy(dir.path("to"));
    EXPECT_TRUE(streamEquals(copy, content));
    EXPECT_FALSE(streamEquals(copy, content + "x"));
    EXPECT_THAT(thrownText<std::system_error>([&] { copyData(to, from); }),
                StartsWith("Unable to read data"));
    close(from);
    close(to);
}

TEST_F(FileUtils, GuardsRemoveWhatTheyOwnAndLogWhatTheyCannot) {
    const int fd = open(dir.write("file", "").c_str(), O_RDONLY | O_CLOEXEC);
    dir.write("folder/inner/file", "");
    dir.write("occupied/file", "");
    dir.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts = 1\n");
    {
        const TempFileGuard file(dir.path("file"), fd);
        const TempDirGuard folder(dir.path("folder"));
        const TempFileGuard gone(dir.path("gone"));
        const TempFileGuard occupied(dir.path("occupied"));
        const TempDirGuard released;
    }
    EXPECT_EQ(close(fd), -1);
    EXPECT_FALSE(fs::exists(dir.path("file")) || fs::exists(dir.path("folder")));
    EXPECT_THAT(log.lines.back(), StartsWith("Unable to delete the file '" + dir.path("occupied") + "': "));
}

/// Moving and copying between the temporary directory and /dev/shm.
class Rename : public LibraryTest {
protected:
    /// A file, a link to it, a dangling link, and a directory of mode 0750 with a file in it.
    void makeTree(const std::string& name) const {
        dir.write(name + "/file", "content");
        dir.write(name + "/inner/deep/run", "");
        fs::create_symlink("file", dir.path(name + "/link"));
        fs::create_symlink("nowhere", dir.path(name + "/dangling"));
        fs::permissions(dir.path(name + "/inner"), fs::perms(0750));
    }

    static void expectTree(const std::string& root) {
        EXPECT_EQ(readFile(root + "/file"), "content");
        EXPECT_EQ(fs::read_symlink(root + "/link"), "file");
        EXPECT_EQ(fs::read_symlink(root + "/dangling"), "nowhere");
        EXPECT_EQ(statFile(root + "/inner").st_mode & 0777, 0750U);
        EXPECT_TRUE(fs::exists(root + "/inner/deep/run"));
    }

    TempDir there{"/dev/shm"};
};

TEST_F(Rename, MovesFilesAndMergesDirectoriesAcrossFileSystems) {
    if (statFile(dir.path()).st_dev == statFile(there.path()).st_dev) {
        GTEST_SKIP() << "the temporary directory and /dev/shm are one file system";
    }
    brask::rename(dir.write("from", "content"), there.path("file"));
    EXPECT_EQ(readFile(there.path("file")), "content");
    EXPECT_FALSE(fs::exists(dir.path("from")));

    const std::string from = dir.write("from", "new");
    const std::string to = there.write("to", "old");
    EXPECT_THAT(thrownText<Error<&CantRenameFile>>([&] { brask::rename(from, to); }),
                StartsWith("Cannot rename " + from + " to " + to + ": "));
    EXPECT_EQ(readFile(from) + readFile(to), "newold");

    makeTree("tree");
    there.write("tree/file", "old");
    there.write("tree/kept", "kept");
    brask::rename(dir.path("tree"), there.path("tree"));
    expectTree(there.path("tree"));
    EXPECT_EQ(readFile(there.path("tree/kept")), "kept");
    EXPECT_FALSE(fs::exists(dir.path("tree")));
}

TEST_F(Rename, CopiesReplaceWhatExistsOnlyWhenAsked) {
    makeTree("from");
    ASSERT_EQ(mkfifo(dir.path("from/fifo").c_str(), 0600), 0);
    for (const auto copy : {copyDirectory, copyDirectoryRecursively}) {
        const TempDir target(there.path());
        copy(dir.path("from"), target.path("to"), false);
        expectTree(target.path("to"));
        EXPECT_FALSE(fs::exists(target.path("to/fifo")));
        target.write("to/file", "old");
        EXPECT_THROW(copy(dir.path("from"), target.path("to"), false), fs::filesystem_error);
        EXPECT_EQ(readFile(target.path("to/file")), "old");
        copy(dir.path("from"), target.path("to"), true);
        expectTree(target.path("to"));
    }
}

} // namespace
