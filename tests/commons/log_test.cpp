#include "commons/call_no_throw.h"
#include "commons/locale_check.h"
#include "commons/start_stop_logger.h"
#include "tests/commons/library_test.h"
#include "tests/support/program.h"
#include "tests/support/scoped_env.h"

#include <boost/exception/all.hpp>

namespace {

using namespace brask;
using namespace test_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using LogTest = LibraryTest;

TEST_F(LogTest, FiltersByTheLevelAndNeverFailsOverAText) {
    GetLogFacade()->LogIfEnabled(4, false, Error<&NoParentNode>());
    GetLogFacade()->LogIfEnabled(3, false, Error<&NoParentNode>());
    logMessage(2, "{} of {}", 1, "x");
    logMessage(2, "{} of {}", 1);
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("NoParentNode "), "1 of x", HasSubstr(": {} of {}")));
}

TEST_F(LogTest, AGuardedCallLogsEveryKindOfFailureAndSwallowsIt) {
    struct BoostOnly : virtual boost::exception {};

    callNoThrow([] { BRASK_THROW_AS(NoParentNode, ExFatal); }, "step");
    callNoThrow([] { throw std::runtime_error("plain"); }, "step");
    callNoThrow([] { throw BoostOnly() << boost::errinfo_errno(2); }, "step");
    callNoThrow([] { throw 1; }, "step {}");
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("step: No parent"), StartsWith("NoParentNode "),
                                       "step: plain", HasSubstr("errno"), "step {}"));
}

TEST_F(LogTest, ABrokenLocaleBecomesTheCLocaleForChildren) {
    const ScopedEnv lang("LANG", "xx_YY.broken");
    for (const auto& [value, left] : {std::pair{"C.UTF-8", "C.UTF-8"}, {"", "C"}}) {
        const ScopedEnv all("LC_ALL", value);
        checkLocale();
        EXPECT_STREQ(getenv("LC_ALL"), left);
    }
    EXPECT_THAT(log.lines,
                ElementsAre(HasSubstr(" is invalid (LC_ALL=, LANG=xx_YY.broken), fall back to 'C'.")));
}

TEST_F(LogTest, TheStartLineIsTheCommandAsAShellReadsIt) {
    std::vector<std::string> arguments{"", "-x 'y' \"z\"", "$HOME `id` \\ $(id) ~ *"};
    for (int byte = 1; byte < 256; ++byte) {
        arguments.emplace_back(2, static_cast<char>(byte));
    }
    std::vector<char*> argv;
    std::string expected;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
        expected += argument + '\0';
    }
    StartStopLogger("tool", static_cast<int>(argv.size()), argv.data()).SetExitCode(-2);
    { const StartStopLogger bare("tool", 0, argv.data()); }
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("tool started : "), "tool finished. Exit code: -2",
                                       "tool started : ", "tool finished.  (exit code is not reported)"));
    const std::string command = log.lines[0].substr(log.lines[0].find(':') + 2);
    EXPECT_EQ(runProgram({"/bin/sh", "-c", "printf '%s\\0' " + command}).out, expected);
}

} // namespace
