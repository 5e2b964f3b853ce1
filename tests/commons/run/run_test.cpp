#include "commons/run/locale_check.h"
#include "commons/run/start_stop_logger.h"
#include "tests/commons/library_test.h"
#include "tests/support/program.h"
#include "tests/support/scoped_env.h"

namespace {

using namespace brask;
using namespace test_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using RunTest = LibraryTest;

TEST_F(RunTest, ABrokenLocaleBecomesTheCLocaleForChildren) {
    const ScopedEnv lang("LANG", "xx_YY.broken");
    for (const auto& [value, left] : {std::pair{"C.UTF-8", "C.UTF-8"}, {"", "C"}}) {
        const ScopedEnv all("LC_ALL", value);
        checkLocale();
        EXPECT_STREQ(getenv("LC_ALL"), left);
    }
    EXPECT_THAT(log.lines,
                ElementsAre(HasSubstr(" is invalid (LC_ALL=, LANG=xx_YY.broken), fall back to 'C'.")));
}

TEST_F(RunTest, TheStartLineIsTheCommandAsAShellReadsIt) {
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
