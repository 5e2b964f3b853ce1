#include "lib/process/lib/ExecCmd.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>

namespace {

using namespace brask;

TEST(ExecCmd, RunTellsAllThatIsKnownOfAFailure) {
    ExecCmd cmd("sh");
    cmd.addArg("-c").addArg("cat; echo $1 >&2; exit 2").addArg("").addArg("a b");
    cmd.stdinData = "in\n";
    const std::string text = test_support::thrownText<ExecCmd::ExFailed>([&] { cmd.run(); });
    // What a run leaves in errno depends on its timing.
    const std::string last = cmd.lastError.empty() ? "" : "Last error is\n" + cmd.lastError + "\n";
    EXPECT_EQ(text,
              "Execution of sh -c cat\\;\\ echo\\ \\$1\\ \\>\\&2\\;\\ exit\\ 2 '' a\\ b failed with return "
              "code 2.\nStdin is\nin\nStdout is\nin\nStderr is\na b\n" +
                  last);
}

TEST(ExecCmd, ExceptionsPassRunAndStopAtExec) {
    struct Raising : ExecCmd {
        using ExecCmd::ExecCmd;

        int execute() override { throw std::runtime_error("cannot fork"); }
    } cmd("/x/tool");

    EXPECT_EQ(cmd.exec(), -1);
    EXPECT_THROW(cmd.run(), std::runtime_error);
    EXPECT_NO_THROW(ExecCmd("true").run());
}

TEST(ExecCmd, AMissingProgramIsStatusOneWithTheReason) {
    ExecCmd cmd("/nonexistent/tool");
    EXPECT_EQ(cmd.exec(), 1);
    EXPECT_THAT(cmd.stderrData,
                testing::HasSubstr(": forkExecvPipes: execv() failed: No such file or directory\n"));
    EXPECT_THAT(cmd.stdoutData, testing::EndsWith(cmd.stderrData));
}

TEST(ShellEscape, EveryByteIsWrittenAsItsMarkSays) {
    const std::string escaped = "\t \"#$&'()*;<>?[\\`|~";
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool isEscaped = escaped.find(text) != std::string::npos;
        EXPECT_EQ(escapeForShell(text), byte == '\n' ? "'\n'" : isEscaped ? "\\" + text : text) << byte;
        EXPECT_EQ(isSafeWord(text.c_str()), byte != '\n' && !isEscaped) << byte;
    }
    EXPECT_EQ(shellQuote("it's a \"b\""), "'it'\\''s a \"b\"'");
}

} // namespace
