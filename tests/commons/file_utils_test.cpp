#include "commons/file_utils.h"
#include "commons/retry.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::readFile;
using test_support::TempDir;
using ::testing::StartsWith;
namespace fs = std::filesystem;

/// Calls a function that fails `failures` times and then succeeds; tells how often it was called, with the
/// number of the call that failed last behind a "!".
std::string callsOf(int failures, unsigned attempts, unsigned pauseMs) {
    int calls = 0;
    try {
        retry(
            [&] {
                if (++calls <= failures) {
                    throw calls;
                }
            },
            attempts, pauseMs);
    } catch (int last) {
        return std::to_string(calls) + "!" + std::to_string(last);
    }
    return std::to_string(calls);
}

TEST(Retry, CallsUntilItSucceedsOrAttemptsRunOut) {
    EXPECT_EQ(callsOf(0, 3, 0), "1");
    EXPECT_EQ(callsOf(2, 3, 0), "3");
    EXPECT_EQ(callsOf(3, 3, 0), "3!3");
    EXPECT_EQ(callsOf(1, 0, 0), "0");
}

TEST(Retry, SleepsOnlyBetweenCalls) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(callsOf(1, 1, 60000), "1!1");
    EXPECT_EQ(callsOf(0, 2, 60000), "1");
    EXPECT_EQ(callsOf(3, 3, 30), "3!3");
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds(60));
    EXPECT_LT(took, std::chrono::seconds(30));
}

TEST(MakeDir, GivesEveryNewDirectoryTheSameOwnerAndMode) {
    const TempDir dir;
    const uid_t uid = geteuid() == 0 ? 12345 : geteuid();
    const gid_t gid = geteuid() == 0 ? 23456 : getegid();
    const mode_t before = statFile(dir.path()).st_mode;
    const mode_t umaskBefore = umask(022);
    make_dir(dir.path("a/b//c/"), uid, gid, 0770);
    umask(umaskBefore);
    for (const char* name : {"a", "a/b", "a/b/c"}) {
        const struct stat made = statFile(dir.path(name));
        EXPECT_EQ(made.st_uid, uid) << name;
        EXPECT_EQ(made.st_gid, gid) << name;
        EXPECT_EQ(made.st_mode & 07777, 0750U) << name;
    }
    EXPECT_EQ(statFile(dir.path()).st_mode, before);
    EXPECT_EQ(statFile(dir.path()).st_uid, geteuid());
}

TEST(MakeDir, LeavesWhatIsThereAloneAndHidesFailures) {
    const TempDir dir;
    const std::string file = dir.write("file", "content");
    const struct stat before = statFile(file);
    make_dir(file.c_str(), 1, 1, 0777);
    make_dir(file + "/below", 1, 1, 0777);
    make_dir(dir.path() + "/" + std::string(5000, 'x'), 1, 1, 0777);
    make_dir("", 1, 1, 0777);
    EXPECT_EQ(readFile(file), "content");
    EXPECT_EQ(statFile(file).st_mode, before.st_mode);
    EXPECT_EQ(statFile(file).st_uid, before.st_uid);
}

TEST(GetFreeSpace, IsThatOfTheFileSystemOfThePath) {
    const TempDir dir;
    const auto expected = fs::space(dir.path()).available;
    const auto tolerance = expected / 10 + (64U << 20);
    EXPECT_NEAR(static_cast<double>(getFreeSpace(dir.path())), static_cast<double>(expected),
                static_cast<double>(tolerance));
    try {
        getFreeSpace(dir.path("missing"));
        ADD_FAILURE();
    } catch (const Error<&CantStatFS>& e) {
        EXPECT_EQ(e.what(),
                  "Cannot stat filesystem containing " + dir.path("missing") + ": No such file or directory");
    }
}

TEST(CopyData, MovesAllBytesThroughAPipe) {
    const TempDir dir;
    std::string content;
    for (int i = 0; i < 300001; ++i) {
        content += static_cast<char>(i * i % 251);
    }
    const int from = open(dir.write("from", content).c_str(), O_RDONLY | O_CLOEXEC);
    const int to = open(dir.path("to").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int pipeEnds[2];
    ASSERT_EQ(pipe2(pipeEnds, O_CLOEXEC), 0);
    std::thread writer([&] {
        copyData(from, pipeEnds[1]);
        close(pipeEnds[1]);
    });
    copyData(pipeEnds[0], to);
    writer.join();
    EXPECT_EQ(readFile(dir.path("to")), content);

    try {
        copyData(to, from);
        ADD_FAILURE();
    } catch (const std::system_error& e) {
        EXPECT_THAT(e.what(), StartsWith("Unable to read data"));
    }
    lseek(from, 0, SEEK_SET);
    try {
        copyData(from, from);
        ADD_FAILURE();
    } catch (const std::system_error& e) {
        EXPECT_THAT(e.what(), StartsWith("Unable to write data"));
    }
    for (const int fd : {from, to, pipeEnds[0]}) {
        close(fd);
    }
}

TEST(StreamEquals, ComparesFromTheStartAsFarAsExpected) {
    std::istringstream stream("content");
    stream.ignore(100);
    EXPECT_TRUE(streamEquals(stream, "content"));
    EXPECT_TRUE(streamEquals(stream, "cont"));
    EXPECT_TRUE(streamEquals(stream, ""));
    EXPECT_FALSE(streamEquals(stream, "contenT"));
    EXPECT_FALSE(streamEquals(stream, "content and more"));
    std::ifstream closed;
    EXPECT_THROW(streamEquals(closed, "x"), std::system_error);
}

TEST(StatFile, TellsTheFileThatItCouldNotLookAt) {
    const TempDir dir;
    const std::string file = dir.write("file", "12345");
    EXPECT_EQ(statFile(file).st_size, 5);
    EXPECT_NEAR(static_cast<double>(getModificationTime(file)), static_cast<double>(time(nullptr)), 60);
    try {
        getModificationTime(dir.path("missing"));
        ADD_FAILURE();
    } catch (const std::system_error& e) {
        EXPECT_EQ(e.code(), std::errc::no_such_file_or_directory);
        EXPECT_THAT(e.what(), StartsWith("Failed to stat the file '" + dir.path("missing") + "'"));
    }
}

} // namespace
