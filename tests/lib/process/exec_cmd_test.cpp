#include "lib/process/lib/ExecCmd.h"
#include "tests/support/program.h"
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

TEST(ExecCmd, AFailureIsKnownByItsPlace) {
    struct Place : ExInfoVisitor {
        void OnName(const std::string& tagName) override { text += tagName; }

        void OnMessage(const std::string&) override {}

        void OnFunction(const std::string& function) override { text += function + "|"; }

        void OnFile(const std::string& file) override { text += file + "|"; }

        void OnLine(int line) override { text += std::to_string(line) + "|"; }

        void OnInner() override {}

        void OnSeverity(int) override {}

        std::string text;
    } place;

    try {
        ExecCmd("false").run();
    } catch (const ExecCmd::ExFailed& e) {
        e.Accept(place);
    }
    EXPECT_EQ(place.text,
              "void brask::ExecCmd::reportError() const|lib/process/lib/ExecCmd|76|ExecCmd::ExFailed");
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

TEST(ShellEscape, MarksWhatAShellWouldTakeForItsOwnAndLeavesTheRest) {
    const std::string letters = "Az09!%+,-./:=@]^_{}\r\x7F\xC3\xA4";
    EXPECT_EQ(escapeForShell(letters), letters);
    EXPECT_EQ(escapeForShell("\t \"#$&'()*;<>?[\\`|~\n"),
              "\\\t\\ \\\"\\#\\$\\&\\'\\(\\)\\*\\;\\<\\>\\?\\[\\\\\\`\\|\\~'\n'");
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
        EXPECT_EQ(isSafeWord(all.c_str() + byte - 1), escapeForShell(all.substr(byte - 1)).size() == 1)
            << byte;
    }
    for (const std::string& word : {escapeForShell(all), shellQuote(all)}) {
        EXPECT_EQ(test_support::runProgram({"/bin/sh", "-c", "printf %s x" + word}).out, "x" + all);
    }
}

} // namespace
