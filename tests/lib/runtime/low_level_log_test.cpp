#include "lib/runtime/low_level_log.h"
#include "tests/support/child.h"
#include "tests/support/scoped_env.h"

#include <gtest/gtest.h>

#include <syslog.h>

namespace {

using namespace brask;

TEST(LowLevelLog, TargetAndLevelChooseWhereLinesGo) {
    const std::tuple<const char*, int, const char*, std::string, std::string> cases[] = {
        {nullptr, 0, "7", "0", "0"}, // not initialised
        {"Console", 4, "7", "01234", "01234"},
        {"STDERR", 8 + 3, "7", "", "01234567"}, // 8 lets the environment raise the level
        {"STDERR", 8 + 3, "2", "", "0123"},
        {"STDERR", 8 + 3, "12", "", "0123"},
    };
    for (const auto& [target, level, variable, out, err] : cases) {
        const test_support::ScopedEnv env("BRASK_LOG_LEVEL", variable);
        auto child = test_support::inChild([&] {
            if (target != nullptr) {
                LogInit(target, level, 0, 0, nullptr);
            }
            for (int priority = 0; priority <= 12; ++priority) {
                logWrite(priority, "%d", priority);
            }
        });
        std::erase(child.out, '\n');
        std::erase(child.err, '\n');
        EXPECT_EQ(child.out + "|" + child.err, out + "|" + err) << level << " with " << variable;
    }
}

TEST(LowLevelLog, SyslogLinesCarryTheInheritedTraceIdAndAreCutAtTheBuffer) {
    const test_support::ScopedEnv env("BRASK_LOG_TRACE_ID", "T42");
    const auto child = test_support::inChild([] {
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR | kLogTraceId, "tool");
        logWrite(LOG_WARNING, "%s", std::string(9000, 'x').c_str());
    });
    EXPECT_EQ(child.err.substr(child.err.find("]: ") + 3), "T42: " + std::string(8191 - 5, 'x') + "\n");
}

TEST(LowLevelLog, ANewTraceIdIsHandedDownToChildren) {
    const test_support::ScopedEnv none("BRASK_LOG_TRACE_ID", std::nullopt);
    const auto child = test_support::inChild([] {
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR | kLogTraceId, "tool");
        logWrite(LOG_WARNING, "m");
        printf("R%d %s", getpid(), getenv("BRASK_LOG_TRACE_ID"));
    });
    const std::string id = child.out.substr(child.out.find(' ') + 1);
    EXPECT_EQ(child.out, id + " " + id);
    EXPECT_TRUE(child.err.ends_with("]: " + id + ": m\n")) << child.err;
}

TEST(ErrorExit, AMessageThatCannotBeFormattedStillEndsTheProcess) {
    const auto child = test_support::inChild([] {
        const wchar_t noCharacter[] = {0x7fffffff, 0};
        errno = ENOENT;
        ErrorExit(3, "%ls", noCharacter);
    });
    EXPECT_EQ(child.exitCode, 3);
    EXPECT_EQ(child.err, "runtime_tests: \nSystem error 2: No such file or directory\n");
}

} // namespace
