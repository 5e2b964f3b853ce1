#include "commons/files/shared_file.h"
#include "tests/commons/library_test.h"
#include "tests/support/file_size_limit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

using brask::SharedFile;
using namespace test_support;

constexpr uid_t kSame = static_cast<uid_t>(-1);
constexpr int kRecords = 1000;

/// Records of different lengths, so that a record over another's place would show.
std::string record(int writer, int number) {
    return brask::fmtlib::format("{} {} {:x>{}}|", writer, number, "", (number * 7 + writer) % 200);
}

/// The life of a process that writes its records, again and again if it is `endless`.
[[noreturn]] void writeRecords(const std::string& path, int writer, bool endless) noexcept {
    SharedFile file(path, kSame, kSame, 0600);
    for (int number = 0; endless || number < kRecords; ++number) {
        file.AppendLine(record(writer, number % kRecords));
    }
    _exit(0);
}

class SharedFileTest : public LibraryTest {
protected:
    /// Whether some other descriptor could lock the file that way at once.
    bool lockIsFree(int operation) const {
        const int fd = open(path.c_str(), O_RDWR);
        const bool isFree = flock(fd, operation | LOCK_NB) == 0;
        close(fd);
        return isFree;
    }

    std::string path = dir.path("shared");
};

TEST_F(SharedFileTest, SixteenProcessesLeaveEveryRecordWholeThoughOthersAreKilled) {
    std::map<int, pid_t> children;
    for (int writer = 0; writer < 20; ++writer) {
        children[writer] = fork();
        if (children[writer] == 0) {
            writeRecords(path, writer, writer >= 16);
        }
    }
    for (int writer = 19; writer >= 0; --writer) {
        int status = -1;
        usleep(5000);
        kill(children[writer], writer >= 16 ? SIGKILL : 0);
        waitpid(children[writer], &status, 0);
        EXPECT_EQ(status, writer >= 16 ? SIGKILL : 0) << writer;
    }

    std::map<int, int> counts;
    int torn = 0;
    std::ifstream lines(path);
    for (std::string line; std::getline(lines, line);) {
        const auto writer = static_cast<int>(std::strtol(line.c_str(), nullptr, 10));
        int& count = counts[writer];
        line == record(writer, count % kRecords) ? ++count : ++torn;
    }
    // A write that crosses from one page of the file to the next can be cut in two there by a kill.
    EXPECT_LE(torn, 4);
    for (int writer = 0; writer < 16; ++writer) {
        EXPECT_EQ(counts[writer], kRecords) << writer;
    }
}

TEST_F(SharedFileTest, ALineBeginsOnALineOfItsOwnAndNothingThatWasThereIsLost) {
    for (const std::string before : {"", "whole\n", "torn", "whole\ntorn"}) {
        dir.write("shared", before);
        SharedFile(path, kSame, kSame, 0600).AppendLine("line");
        EXPECT_EQ(readFile(path), before + (before.empty() || before.back() == '\n' ? "" : "\n") + "line\n");
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
}

TEST_F(SharedFileTest, AFileThatStopsGrowingIsNamedAndUnlocked) {
    const auto outcome = inChild([&] {
        // A write over the limit is cut short at first and refused at the next try.
        const FileSizeLimit limit(10);
        SharedFile file(path, kSame, kSame, 0600);
        const std::string failure = thrownText<std::system_error>([&] { file.Append("0123456789ABCDEF"); });
        limit.lift();
        puts((failure + (lockIsFree(LOCK_EX) ? ", free" : ", locked")).c_str());

        const FailingLog failing;
        SharedFile lost(path, kSame, kSame, 0600);
        lost.lockShared();
        close_range(3, ~0U, 0); // it can't be unlocked, which is not the end of the process
    });
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "Failed to write the file " + path + ": File too large, free\n");
    EXPECT_EQ(readFile(path), "0123456789");
}

} // namespace
