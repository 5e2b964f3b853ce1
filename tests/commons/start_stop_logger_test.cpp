#include "commons/start_stop_logger.h"
#include "tests/support/program.h"
#include "tests/support/recording_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <numeric>

namespace {

using namespace brask;
using test_support::RecordingLog;
using test_support::runProgram;
using ::testing::ElementsAre;

/// A logger "tool" for the command line given.
std::unique_ptr<StartStopLogger> start(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return std::make_unique<StartStopLogger>("tool", static_cast<int>(arguments.size()), argv.data());
}

TEST(StartStopLogger, FramesTheRun) {
    RecordingLog log;
    start({"/bin/tool", "a b", "", "c'd"})->SetExitCode(0);
    start({})->SetExitCode(-2);
    start({"x{}"});
    EXPECT_THAT(log.lines,
                ElementsAre("tool started : /bin/tool a\\ b '' c\\'d", "tool finished. Exit code: 0",
                            "tool started : ", "tool finished. Exit code: -2", "tool started : x{}",
                            "tool finished.  (exit code is not reported)"));
}

TEST(StartStopLogger, WritesTheCommandLineAsAShellReadsIt) {
    std::vector<std::string> arguments{"--empty=",
                                       "",
                                       "two\nlines\n",
                                       "-x 'y' \"z\"",
                                       "$HOME `id` \\ $(id) ~ *",
                                       "\xC3\xA9t\xC3\xA9 & | ; # !"};
    for (int byte = 1; byte < 256; ++byte) {
        arguments.emplace_back(1, static_cast<char>(byte));
    }
    RecordingLog log;
    start(arguments);
    const std::string prefix = "tool started : ";
    ASSERT_EQ(log.lines[0].substr(0, prefix.size()), prefix);

    const auto shell = runProgram({"/bin/sh", "-c", "printf '%s\\0' " + log.lines[0].substr(prefix.size())});
    const std::string expected =
        std::accumulate(arguments.begin(), arguments.end(), std::string(),
                        [](const std::string& all, const std::string& one) { return all + one + '\0'; });
    EXPECT_EQ(shell.out, expected);
}

TEST(StartStopLogger, TellsTheProcessIdOfADaemon) {
    RecordingLog log;
    const auto logger = start({"tool"});
    const std::string pid = std::to_string(getpid());
    daemonHooks().back()();
    EXPECT_EQ(log.lines.back(), "tool " + pid + " -> (" + pid + " daemon)");
}

TEST(StartStopLogger, IsSilentWithoutALogAndStartsSilentlyBelowTheVerboseLevel) {
    start({"tool"});
    RecordingLog log(2);
    start({"tool"});
    daemonHooks().pop_back();
    EXPECT_THAT(log.lines, ElementsAre("tool finished.  (exit code is not reported)"));
}

} // namespace
