#include "commons/shared_file.h"
#include "tests/support/child.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using brask::SharedFile;
using test_support::FileSizeLimit;
using test_support::inChild;
using test_support::readFile;
using test_support::TempDir;

constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
constexpr gid_t kSameGroup = static_cast<gid_t>(-1);
constexpr int kRecords = 1000;

/// A process of its own for `work`; its exit status is 0 when that returns.
pid_t startChild(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        try {
            work();
            _exit(0);
        } catch (...) {
            _exit(1);
        }
    }
    return child;
}

int statusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

/// Lets processes start at one moment: each waits, and go() lets all of them through.
class StartingGate {
public:
    StartingGate() { EXPECT_EQ(pipe(ends), 0); }

    void wait() {
        char byte = 0;
        close(ends[1]);
        EXPECT_EQ(read(ends[0], &byte, 1), 0);
    }

    void go() {
        close(ends[0]);
        close(ends[1]);
    }

private:
    int ends[2] = {-1, -1};
};

/// Records of different lengths, so that a record over another's place would show.
std::string record(int writer, int number) {
    return std::to_string(writer) + " " + std::to_string(number) + " " +
           std::string(static_cast<std::size_t>(number * 7 + writer) % 200, 'x') + "|";
}

/// The count of each writer's records; fails on a line that is not the writer's next record, whole.
std::map<int, int> countRecords(const std::string& path) {
    std::map<int, int> counts;
    std::istringstream lines(readFile(path));
    for (std::string line; std::getline(lines, line);) {
        const int writer = std::atoi(line.c_str());
        EXPECT_EQ(line, record(writer, counts[writer]++ % kRecords));
    }
    return counts;
}

/// Whether some other descriptor could lock the file that way at once.
bool lockIsFree(const std::string& path, int operation) {
    const int fd = open(path.c_str(), O_RDWR);
    const bool isFree = flock(fd, operation | LOCK_NB) == 0;
    close(fd);
    return isFree;
}

std::string failureOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

class SharedFileTest : public testing::Test {
protected:
    TempDir dir;
    std::string path = dir.path("shared");
};

TEST_F(SharedFileTest, SixteenProcessesLeaveEveryRecordWhole) {
    StartingGate gate;
    std::vector<pid_t> children;
    for (int writer = 0; writer < 16; ++writer) {
        children.push_back(startChild([&] {
            gate.wait();
            SharedFile file(path, kSameOwner, kSameGroup, 0600);
            for (int number = 0; number < kRecords; ++number) {
                file.Append(record(writer, number) + "\n");
            }
        }));
    }
    gate.go();
    for (const pid_t child : children) {
        EXPECT_EQ(statusOf(child), 0);
    }
    const std::map<int, int> counts = countRecords(path);
    EXPECT_EQ(counts.size(), 16U);
    for (const auto& [writer, count] : counts) {
        EXPECT_EQ(count, kRecords) << writer;
    }
}

// A write that crosses from one page of the file to the next can be cut in two there by a kill.
TEST_F(SharedFileTest, AKilledWriterHarmsNoLineOfTheOthers) {
    StartingGate gate;
    const auto start = [&](int writer, bool endless) {
        return startChild([&, writer, endless] {
            gate.wait();
            SharedFile file(path, kSameOwner, kSameGroup, 0600);
            for (int number = 0; endless || number < kRecords; ++number) {
                file.AppendLine(record(writer, number % kRecords));
            }
        });
    };
    const std::vector<pid_t> survivors{start(0, false), start(1, false), start(2, false)};
    const std::vector<pid_t> victims{start(3, true), start(4, true), start(5, true)};
    gate.go();
    for (const pid_t victim : victims) {
        usleep(5000);
        kill(victim, SIGKILL);
        EXPECT_TRUE(WIFSIGNALED(statusOf(victim)));
    }
    for (const pid_t survivor : survivors) {
        EXPECT_EQ(statusOf(survivor), 0);
    }
    SharedFile(path, kSameOwner, kSameGroup, 0600).AppendLine(record(6, 0));
    std::map<int, int> counts = countRecords(path);
    for (int writer = 0; writer < 3; ++writer) {
        EXPECT_EQ(counts[writer], kRecords) << writer;
    }
    EXPECT_EQ(counts[6], 1);
}

TEST_F(SharedFileTest, ALineCutsOffTheTornOneBeforeIt) {
    const std::pair<std::string, std::string> cases[] = {{"", ""},
                                                         {"torn", ""},
                                                         {"whole\n", "whole\n"},
                                                         {"whole\n\ntorn", "whole\n\n"},
                                                         {"whole\n" + std::string(10000, 't'), "whole\n"}};
    for (const auto& [before, kept] : cases) {
        dir.write("shared", before);
        SharedFile(path, kSameOwner, kSameGroup, 0600).AppendLine("line");
        EXPECT_EQ(readFile(path), kept + "line\n");
    }
}

TEST_F(SharedFileTest, LocksAreHeldGivenUpAndNeverChangedIntoTheOtherKind) {
    SharedFile file(path, kSameOwner, kSameGroup, 0600);
    file.unlock();
    file.lockShared();
    file.lockShared();
    EXPECT_TRUE(lockIsFree(path, LOCK_SH));
    EXPECT_FALSE(lockIsFree(path, LOCK_EX));
    const std::string inShared = "The file " + path + " has already locked in the shared mode";
    EXPECT_EQ(failureOf([&] { file.lockExclusive(); }), inShared);
    EXPECT_EQ(failureOf([&] { file.Append("x"); }), inShared);
    EXPECT_FALSE(lockIsFree(path, LOCK_EX));
    file.unlock();
    EXPECT_TRUE(lockIsFree(path, LOCK_EX));

    file.lockExclusive();
    file.lockExclusive();
    EXPECT_FALSE(lockIsFree(path, LOCK_SH));
    EXPECT_EQ(failureOf([&] { file.lockShared(); }),
              "The file " + path + " has already locked in the exclusive mode");
    file.Append("");
    file.Append("kept");
    EXPECT_FALSE(lockIsFree(path, LOCK_SH)) << "the caller's lock stays";
    file.unlock();
    file.Append("|");
    EXPECT_TRUE(lockIsFree(path, LOCK_EX)) << "a lock for one call is given up";
    EXPECT_EQ(readFile(path), "kept|");
}

TEST_F(SharedFileTest, AFileThatStopsGrowingRaisesAndGivesUpTheLock) {
    const auto outcome = inChild([&] {
        // A write over the limit is cut short at first and refused at the next try.
        const FileSizeLimit limit(10);
        SharedFile file(path, kSameOwner, kSameGroup, 0600);
        const std::string failure = failureOf([&] { file.Append("0123456789ABCDEF"); });
        limit.lift();
        std::cout << failure << (lockIsFree(path, LOCK_EX) ? ", free" : ", locked") << std::flush;
    });
    EXPECT_EQ(outcome.out, "Failed to write the file " + path + ": File too large, free");
    EXPECT_EQ(readFile(path), "0123456789");
}

TEST_F(SharedFileTest, FailuresToOpenAndToGiveAwayNameTheFile) {
    const std::string missing = dir.path("none/file");
    EXPECT_EQ(failureOf([&] { SharedFile(missing, kSameOwner, kSameGroup, 0600); }),
              "Failed to open the file " + missing + ": No such file or directory");

    ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
    const auto outcome = inChild([&] {
        if (getuid() == 0 && setuid(65534) != 0) {
            throw std::runtime_error("cannot leave root");
        }
        std::cout << failureOf([&] { SharedFile(path, 0, 0, 0600); }) << std::flush;
    });
    EXPECT_EQ(outcome.out, "Failed to change ownership of the file '" + path + "': Operation not permitted");
}

TEST_F(SharedFileTest, ANewAndAnExistingFileAreGivenToOwnerAndGroup) {
    if (getuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    for (const auto& [owner, group] :
         {std::pair{kSameOwner, gid_t{4321}}, std::pair{uid_t{1234}, gid_t{4322}}}) {
        SharedFile(path, owner, group, 0660).Append("line\n");

        struct stat info {};

        ASSERT_EQ(stat(path.c_str(), &info), 0);
        EXPECT_EQ(info.st_uid, owner == kSameOwner ? 0 : owner);
        EXPECT_EQ(info.st_gid, group);
    }
}

} // namespace
