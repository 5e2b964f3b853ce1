#include "lib/runtime/low_level_log.h"
#include "tests/support/child.h"
#include "tests/support/scoped_env.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <syslog.h>

namespace {

using namespace brask;
using test_support::inChild;
using test_support::ScopedEnv;

TEST(LowLevelLog, BeforeItIsInitialisedOnlyTheGravestLinesAreWritten) {
    const auto child = inChild([] {
        logWrite(3, "look-up failed");
        logWrite(12, "bad line");
        logWrite(0, "%s %d", "emergency", 7);
    });
    EXPECT_EQ(child.out, "emergency 7\n");
    EXPECT_EQ(child.err, "emergency 7\n");
}

TEST(LowLevelLog, TheTargetChoosesTheStreams) {
    const struct {
        const char* target;
        const char* out;
        const char* err;
    } cases[] = {{"Console", "line\n", "line\n"}, {"STDERR", "", "line\n"}, {"/tmp/file", "", ""}};

    for (const auto& c : cases) {
        const auto child = inChild([&] {
            LogInit(c.target, 4, 0, 0, nullptr);
            logWrite(4, "line");
            logWrite(5, "above the threshold");
        });
        EXPECT_EQ(child.out, c.out) << c.target;
        EXPECT_EQ(child.err, c.err) << c.target;
    }
}

TEST(LowLevelLog, TheEnvironmentMayOnlyRaiseTheLevelAndOnlyWhenAllowed) {
    const struct {
        int level;
        const char* variable;
        int threshold;
    } cases[] = {{3, "7", 3},    {8 + 3, "7", 7},  {8 + 3, "2", 3},  {8 + 3, "8", 3},  {8 + 3, "12", 3},
                 {8 + 3, "", 3}, {8 + 3, "-1", 3}, {8 + 3, "7 ", 3}, {16 + 5, "7", 5}, {8 + 0, "0", 0}};

    for (const auto& c : cases) {
        const ScopedEnv env("BRASK_LOG_LEVEL", c.variable);
        const auto child = inChild([&] {
            LogInit("stderr", 0, 0, 0, nullptr);
            LogSetLevel(c.level);
            for (int priority = 0; priority <= 12; ++priority) {
                logWrite(priority, "line");
            }
        });
        EXPECT_EQ(std::count(child.err.begin(), child.err.end(), '\n'), c.threshold + 1)
            << c.level << " with '" << c.variable << "'";
    }
}

/// What syslog is given, without the "ident[pid]: " in front: LOG_PERROR repeats each line on standard error.
std::string afterPrefix(const std::string& line) {
    const auto end = line.find("]: ");
    return end == std::string::npos ? line : line.substr(end + 3);
}

TEST(LowLevelLog, SyslogLinesCarryTheInheritedTraceIdAndAreCutAtTheBuffer) {
    const ScopedEnv env("BRASK_LOG_TRACE_ID", "T42");
    const auto child = inChild([] {
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR | kLogTraceId, "tool");
        fprintf(stderr, "options %#x\n", LogGetOptions());
        logWrite(12, "%s", std::string(9000, 'x').c_str());
        logWrite(LOG_NOTICE, "above the threshold");
    });
    EXPECT_EQ(child.err.rfind("options 0x61\ntool[", 0), 0U) << child.err.substr(0, 40);
    EXPECT_EQ(afterPrefix(child.err), "T42: " + std::string(8191 - 5, 'x') + "\n");
}

TEST(LowLevelLog, AMadeTraceIdIsSharedWithChildren) {
    const ScopedEnv env("BRASK_LOG_TRACE_ID", "");
    const auto child = inChild([] {
        std::string name = "tool";
        program_invocation_short_name = name.data();
        LogInit(nullptr, 7, LOG_USER, LOG_PERROR | kLogTraceId, nullptr);
        const std::string expected = "T" + std::to_string(getpid());
        printf("%s", inChild([&] {
                         LogInit(nullptr, 7, LOG_USER, LOG_PERROR | kLogTraceId, nullptr);
                         logWrite(3, "is %s", expected.c_str());
                     }).err.c_str());
    });
    const std::string line = afterPrefix(child.out);
    const std::string id = line.substr(0, line.find(':'));
    EXPECT_GT(id.size(), 1U) << child.out;
    EXPECT_EQ(line, id + ": is " + id + "\n");
}

TEST(LowLevelLog, WithoutTheTraceIdOptionLinesAreBare) {
    const ScopedEnv env("BRASK_LOG_TRACE_ID", "T42");
    const auto child = inChild([] {
        LogInit(nullptr, 7, LOG_USER, LOG_PERROR, std::string(70, 'i').c_str());
        logWrite(3, "%s", "bare");
    });
    EXPECT_EQ(child.err.rfind(std::string(63, 'i') + "[", 0), 0U) << child.err;
    EXPECT_EQ(afterPrefix(child.err), "bare\n");
}

TEST(ErrorExit, TellsBothStreamsWholeAndEndsTheProcess) {
    const std::string longText(100'000, 'x');

    const struct {
        int error;
        int exitCode;
        std::string message;
        std::string expected;
    } cases[] = {
        {0, 1, "gone", "tool: gone\n"},
        {0, 7, "gone\n", "tool: gone\n"},
        {ENOENT, 1, "gone", "tool: gone\nSystem error 2: No such file or directory\n"},
        {ENOENT, 1, longText, "tool: " + longText + "\nSystem error 2: No such file or directory\n"},
        {0, 0, "only told", "tool: only told\nreturned\n"},
    };

    for (const auto& c : cases) {
        const auto child = inChild([&] {
            std::string name = "/some/where/tool";
            program_invocation_name = name.data();
            errno = c.error;
            ErrorExit(c.exitCode, "%s", c.message.c_str());
            puts("returned");
            fputs("returned\n", stderr);
        });
        EXPECT_EQ(child.exitCode, c.exitCode) << c.expected.substr(0, 80);
        EXPECT_EQ(child.out, c.expected);
        EXPECT_EQ(child.err, c.expected);
    }
}

} // namespace
