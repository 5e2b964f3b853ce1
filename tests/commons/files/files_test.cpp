#include "commons/files/file_guards.h"
#include "commons/files/file_utils.h"
#include "commons/files/rename.h"
#include "commons/files/retry.h"
#include "commons/files/shared_file.h"
#include "commons/files/temp_file.h"
#include "tests/commons/library_test.h"
#include "tests/support/refused_call.h"

#include <deque>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using namespace test_support;

TEST(Retry, CallsUntilItSucceedsOrAttemptsRunOutAndSleepsBetweenCalls) {
    int calls = 0;
    const auto failFourTimes = [&calls] { requireSuccess(++calls > 4, "call"); };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(retry(failFourTimes, 3, 20), std::system_error);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
    retry(failFourTimes, 0, 600000);
    EXPECT_THROW(retry(failFourTimes, 1, 600000), std::system_error);
    retry(failFourTimes, 2, 600000);
    EXPECT_EQ(calls, 5);
}

using FileUtils = LibraryTest;

TEST_F(FileUtils, NewDirectoriesHaveOneModeAndCopiesAllBytes) {
    const mode_t before = umask(022);
    make_dir(dir.path("a//b/"), geteuid(), getegid(), 0770);
    umask(before);
    EXPECT_EQ(statFile(dir.path("a")).st_mode & 07777, 0750U);
    EXPECT_EQ(statFile(dir.path("a/b")).st_mode & 07777, 0750U);

    const std::string content(300001, 'x');
    const int from = open(dir.write("from", content).c_str(), O_RDONLY | O_CLOEXEC);
    const int to = open(dir.path("to").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    copyData(from, to);
    EXPECT_EQ(readFile(dir.path("to")), content);
    EXPECT_THROW(copyData(to, from), std::system_error);
}

TEST_F(FileUtils, AStreamIsComparedFromItsStartAndAFileSystemHasRoom) {
    std::istringstream stream("begin and end");
    stream.ignore(100);
    EXPECT_TRUE(streamEquals(stream, "begin") && streamEquals(stream, ""));
    EXPECT_FALSE(streamEquals(stream, "end") || streamEquals(stream, "begin and end."));
    std::istream nowhere(nullptr);
    EXPECT_THAT(thrownText<std::system_error>([&] { streamEquals(nowhere, "x"); }),
                StartsWith("Unable to set the position on the stream"));
    EXPECT_GT(getFreeSpace(dir.path()), 0U);
    EXPECT_THROW(getFreeSpace(dir.path("none")), Error<&CantStatFS>);
    const std::chrono::sys_time<std::chrono::nanoseconds> aDay(std::chrono::hours(24));
    fs::last_write_time(dir.write("old", ""), std::chrono::file_clock::from_sys(aDay));
    EXPECT_EQ(getModificationTime(dir.path("old")), 86400);
    EXPECT_THROW(getModificationTime(dir.path("none")), std::system_error);
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
        const TempDirGuard unusable(dir.path(std::string(300, 'x')));
    }
    EXPECT_THAT(log.lines.front(), StartsWith("Unable to delete the directory '" + dir.path("xx")));
    EXPECT_EQ(close(fd), -1);
    EXPECT_FALSE(fs::exists(dir.path("file")) || fs::exists(dir.path("folder")));
    EXPECT_THAT(log.lines.back(), StartsWith("Unable to delete the file '" + dir.path("occupied") + "': "));
}

TEST_F(FileUtils, FilesAndTreesGoFromOneFileSystemToTheOther) {
    const auto isElsewhere = [this](const fs::path& path) {
        return fs::exists(path) && statFile(path).st_dev != statFile(dir.path()).st_dev;
    };
    const fs::path candidates[] = {"/dev/shm", "/var/tmp", fs::current_path()};
    const auto* const other = std::find_if(std::begin(candidates), std::end(candidates), isElsewhere);
    ASSERT_NE(other, std::end(candidates)) << "there is but one file system";
    const TempDir there(*other);
    const std::string from = fs::path(dir.write("from/file", "content")).parent_path();
    dir.write("from/inner/run", "");
    fs::create_symlink("nowhere", from + "/link");
    fs::permissions(from + "/inner", fs::perms(0750));
    EXPECT_THAT(thrownText<Error<&CantRenameFile>>([&] { brask::rename(from + "/link/x", there.path()); }),
                StartsWith("Cannot rename " + from + "/link/x to " + there.path() + ": "));
    const auto move = [](const fs::path& a, const fs::path& b, bool) { brask::rename(a, b); };
    for (const auto carry : {copyDirectory, copyDirectoryRecursively, +move}) {
        const TempDir parent(there.path());
        const std::string to = fs::path(parent.write("to/file", "old")).parent_path();
        if (carry != +move) {
            EXPECT_THROW(carry(from, to, false), fs::filesystem_error);
            carry(from, parent.path("new"), false);
            EXPECT_TRUE(fs::exists(parent.path("new/file")));
        }
        carry(from, to, true);
        EXPECT_EQ(readFile(to + "/file"), "content");
        EXPECT_EQ(fs::read_symlink(to + "/link"), "nowhere");
        EXPECT_EQ(statFile(to + "/inner").st_mode & 0777, 0750U);
        EXPECT_TRUE(fs::exists(to + "/inner/run"));
    }
    EXPECT_FALSE(fs::exists(from));
    brask::rename(dir.write("single", "new"), there.path("single"));
    EXPECT_EQ(readFile(there.path("single")), "new");
}

using TempFile = LibraryTest;

/// A file in the folder, of the same random characters each time.
std::string createAt(const std::string& folder) {
    srand(7);
    return BMM_getTempFileAt(folder, open(folder.c_str(), O_RDONLY | O_DIRECTORY), "at").first;
}

TEST_F(TempFile, NamesAndModesFollowOneSchemeAndATakenNameIsDrawnAgain) {
    const std::string path = BMM_getTempFileName(dir.path() + "/", "x", false);
    EXPECT_THAT(path, MatchesRegex(dir.path("bmm-x-[A-Za-z0-9]{6}")));
    EXPECT_EQ(statFile(path).st_mode, S_IFREG | 0600U);
    EXPECT_THAT(BMM_getTempFileName(dir.path(), "exact", true), MatchesRegex(dir.path("exact......")));
    EXPECT_EQ(statFile(BMM_makeTempFileDirectory(dir.path(), "d", false)).st_mode, S_IFDIR | 0700U);
    EXPECT_THAT(thrownText<Error<&CantCreateTempFile>>([] { BMM_getTempFile("", "x", false); }),
                HasSubstr("template '" + dir.path("BMM/tmp/bmm-x-")));
    const std::string removed = BMMTmpFile(dir.path(), "s", true).name();
    EXPECT_FALSE(fs::exists(removed));
    EXPECT_NE(createAt(dir.path()), createAt(dir.path()));
}

TEST_F(TempFile, AFullFileSystemIsFatalAndNamesTheDirectory) {
    const auto outcome = inChild([&] {
        using Full = Error<&NotEnoughSpaceAt, ExFatal>;
        refuseCall(SYS_openat, ENOSPC);
        refuseCall(SYS_mkdirat, EDQUOT);
#ifdef SYS_mkdir
        refuseCall(SYS_mkdir, EDQUOT);
#endif
        puts(thrownText<Full>([&] { BMM_getTempFile(dir.path(), "x", false); }).c_str());
        puts(thrownText<Full>([&] { createAt(dir.path()); }).c_str());
        puts(thrownText<Full>([&] { BMM_makeTempFileDirectory(dir.path(), "x", false); }).c_str());
    });
    const std::string text = "Selected filesystem at " + dir.path() +
                             " has only 0 bytes free, but 4096 bytes are needed for operation\n";
    EXPECT_EQ(outcome.out, text + text + text) << outcome.err;
}

constexpr uid_t kSame = static_cast<uid_t>(-1);

class SharedFileTest : public LibraryTest {
protected:
    /// Whether some other descriptor could lock the file that way at once.
    bool lockIsFree(int operation) const {
        const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "r+"), fclose);
        return flock(fileno(file.get()), operation | LOCK_NB) == 0;
    }

    std::string path = dir.path("shared");
};

TEST_F(SharedFileTest, ManyProcessesLeaveEveryRecordWhole) {
    std::deque<Child> writers;
    for (const char letter : std::string("abcdefgh")) {
        writers.emplace_back([this, letter] {
            SharedFile file(path, kSame, kSame, 0600);
            for (int number = 0; number < 1000; ++number) {
                file.AppendLine(std::string(1 + number % 200, letter)); // over another's place it would show
            }
        });
    }
    for (Child& writer : writers) {
        EXPECT_EQ(writer.wait().status, 0);
    }
    EXPECT_EQ(runProgram({"/bin/sh", "-c", "tr -s a-h <\"$0\" | sort | uniq -c | tr -d ' \\n'", path}).out,
              "1000a1000b1000c1000d1000e1000f1000g1000h");
}

TEST_F(SharedFileTest, ALineBeginsOnALineOfItsOwnAndNothingThatWasThereIsLost) {
    for (const std::string before : {"", "whole\n", "torn", "whole\ntorn"}) {
        dir.write("shared", before);
        SharedFile file(path, kSame, kSame, 0600);
        file.AppendLine("line");
        EXPECT_TRUE(lockIsFree(LOCK_EX));
        SharedFile(path, kSame, kSame, 0600).Append("+");
        EXPECT_EQ(readFile(path), before + (before.empty() || before.back() == '\n' ? "" : "\n") + "line\n+");
    }
}

TEST_F(SharedFileTest, LocksAreHeldGivenUpAndNeverChangedIntoTheOtherKind) {
    SharedFile file(path, kSame, kSame, 0600);
    file.lockShared();
    EXPECT_TRUE(lockIsFree(LOCK_SH) && !lockIsFree(LOCK_EX));
    EXPECT_THROW(file.Append("x"), std::runtime_error);
    file.unlock();
    file.lockExclusive();
    file.Append("");
    EXPECT_FALSE(lockIsFree(LOCK_SH)) << "the caller's lock stays";
    EXPECT_EQ(thrownText<std::runtime_error>([&] { file.lockShared(); }),
              "The file " + path + " has already locked in the exclusive mode");
    const auto child = inChild([&] {
        const FailingLog failing;
        SharedFile lost(path, kSame, kSame, 0600);
        file.unlock();
        lost.lockShared();
        close_range(3, ~0U, 0); // it can't be unlocked, which is not the end of the process
    });
    EXPECT_EQ(child.status, 0);
}

} // namespace
