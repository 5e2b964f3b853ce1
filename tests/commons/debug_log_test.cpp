#include "commons/debug_log.h"
#include "commons/session_files.h"
#include "commons/shared_tags.h"
#include "tests/support/child.h"
#include "tests/support/fixed_params.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cpp/Configurator.hh>

#include <filesystem>
#include <functional>
#include <iostream>

namespace {

using namespace brask;
using test_support::inChild;
using test_support::readFile;
using test_support::ScopedEnv;
using test_support::TempDir;
using testing::HasSubstr;
using testing::MatchesRegex;

constexpr const char* kConfiguration = "BMM/log4cpp.properties";

/// log4cpp is configured once in a process, so each run under a debug log has a child process of its own.
class DebugLogTest : public testing::Test {
protected:
    DebugLogTest() { dir.write(kConfiguration, readFile(SHIPPED_LOG_CONFIGURATION)); }

    test_support::ChildOutcome underSession(const std::function<void()>& body) const {
        return inChild([&] {
            const test_support::FixedParams params({{"PRODUCT_ROOT_D", dir.path()}});
            const SessionLifetimeController session(dir.path("session #1"));
            body();
            std::cout << std::flush;
        });
    }

    test_support::ChildOutcome underDebugLog(bool verbose, bool debug,
                                             const std::function<void()>& body) const {
        return underSession([&] {
            const DebugLogLifetimeController log(verbose, debug);
            body();
        });
    }

    static void writeTwoLines() {
        GetLogFacade()->Write(0, false, "went wrong", nullptr);
        logMessage(4, "a note");
    }

    TempDir dir;
    std::string logFile = dir.path("session #1/migration.log");
    ScopedEnv customLog{"CUSTOM_LOG", std::nullopt};
};

constexpr const char* kTwoLines = "[0-9-]+ [0-9:]+\\.[0-9]{3} \\[[0-9]+\\] ERROR  went wrong\n"
                                  "[0-9-]+ [0-9:]+\\.[0-9]{3} \\[[0-9]+\\] INFO   a note\n";

TEST_F(DebugLogTest, WritesToTheSessionsLogAlone) {
    const auto outcome = underDebugLog(true, false, writeTwoLines);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_THAT(readFile(logFile), MatchesRegex(kTwoLines));
    const std::filesystem::directory_iterator files(dir.path("session #1"));
    EXPECT_EQ(std::distance(files, {}), 1);
}

TEST_F(DebugLogTest, DebugShowsTheLinesInColourToo) {
    const auto outcome = underDebugLog(false, true, writeTwoLines);
    EXPECT_THAT(outcome.err, MatchesRegex("\x1b\\[31m[0-9:.]+ \\[[0-9]+\\] ERROR  went wrong\n\x1b\\[0;39m"
                                          "\x1b\\[37m[0-9:.]+ \\[[0-9]+\\] INFO   a note\n\x1b\\[0;39m"));
    EXPECT_THAT(readFile(logFile), MatchesRegex(kTwoLines));
}

TEST_F(DebugLogTest, ACustomLogGetsTheSameLines) {
    const ScopedEnv custom("CUSTOM_LOG", dir.path("custom.log"));
    underDebugLog(false, false, writeTwoLines);
    EXPECT_THAT(readFile(dir.path("custom.log")), MatchesRegex(kTwoLines));
    EXPECT_EQ(readFile(dir.path("custom.log")), readFile(logFile));
}

TEST_F(DebugLogTest, TheOptionsReachTheFlagsAndTheLevel) {
    struct Case {
        bool verbose;
        bool debug;
        const char* expected;
    };

    for (const Case& c : {Case{false, false, "3 0 0"}, Case{true, false, "3 1 0"}, Case{false, true, "4 0 1"},
                          Case{true, true, "4 0 1"}}) {
        const auto outcome = underDebugLog(c.verbose, c.debug, [] {
            std::cout << GetLogFacade()->GetLevel() << ' ' << currentDebugLog->IsVerbose() << ' '
                      << currentDebugLog->IsDebug();
        });
        EXPECT_EQ(outcome.out, c.expected);
    }
}

TEST_F(DebugLogTest, AnExceptionIsItsDiagnosticLine) {
    underDebugLog(false, false, [] {
        const auto error = Error<&ParamError>().Format("X", "none");
        currentDebugLog->Info(error);
    });
    EXPECT_THAT(readFile(logFile), HasSubstr("Can't get param X: none"));
    EXPECT_THAT(readFile(logFile), HasSubstr("debug_log_test.cpp"));
}

TEST_F(DebugLogTest, ThePriorityOfTheConfigurationHolds) {
    dir.write(kConfiguration, "category.p=ERROR\n" + readFile(SHIPPED_LOG_CONFIGURATION));
    underDebugLog(false, false, writeTwoLines);
    EXPECT_THAT(readFile(logFile), MatchesRegex("[^\n]* ERROR  went wrong\n"));
}

TEST_F(DebugLogTest, AFailureLeavesNoLogAndTheNextAttemptStartsAfresh) {
    const auto outcome = underSession([&] {
        for (const char* broken : {"rootCategory=INFO,NONE\n", ""}) {
            dir.write(kConfiguration, broken);
            try {
                const DebugLogLifetimeController log(false, true);
            } catch (const log4cpp::ConfigureFailure& e) {
                std::cout << (GetLogFacade() == nullptr && currentDebugLog == nullptr ? "nothing "
                                                                                      : "something ");
            }
        }
        dir.write(kConfiguration, readFile(SHIPPED_LOG_CONFIGURATION));
        const DebugLogLifetimeController log(false, false);
        writeTwoLines();
    });
    EXPECT_EQ(outcome.out, "nothing nothing ");
    EXPECT_THAT(readFile(logFile), MatchesRegex(kTwoLines));

    std::filesystem::remove(dir.path(kConfiguration));
    EXPECT_EQ(underDebugLog(false, false, [] {}).err, "File " + dir.path(kConfiguration) + " does not exist");
}

TEST_F(DebugLogTest, ASecondLogInOneProcessHasNoTarget) {
    const auto outcome = underSession([&] {
        { const DebugLogLifetimeController first(false, false); }
        std::cout << (GetLogFacade() == nullptr ? "gone " : "there ");
        std::filesystem::remove(dir.path(kConfiguration));
        const DebugLogLifetimeController second(false, true);
        writeTwoLines();
        std::cout << GetLogFacade()->GetLevel();
    });
    EXPECT_EQ(outcome.out, "gone 4");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(readFile(logFile), "");
}

} // namespace
