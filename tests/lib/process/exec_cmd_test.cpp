#include "lib/process/lib/ExecCmd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace {

using namespace brask;
using testing::EndsWith;
using testing::HasSubstr;

ExecCmd& script(ExecCmd& cmd, const std::string& text) {
    cmd.addArg("-c").addArg(text);
    return cmd;
}

TEST(ExecCmd, ArgumentsReachTheChildAndShowEscaped) {
    ExecCmd cmd("sh");
    script(cmd, R"(printf '%s|' "$@")").addArg("me").addArg("").addArg("a b").addArg("\xc3\xa9");
    EXPECT_EQ(cmd.exec(), 0);
    EXPECT_EQ(cmd.stdoutData, "|a b|\xc3\xa9|");
    EXPECT_EQ(cmd.toString(), "sh -c printf\\ \\'%s\\|\\'\\ \\\"\\$@\\\" me '' a\\ b \xc3\xa9");
}

TEST(ExecCmd, RunTellsAllThatIsKnownOfAFailure) {
    ExecCmd cmd("sh");
    script(cmd, "cat; echo bad >&2; exit 2");
    cmd.stdinData = "in";
    try {
        cmd.run();
        FAIL();
    } catch (const ExecCmd::ExFailed& e) {
        EXPECT_EQ(
            std::string(e.what()),
            "Execution of sh -c cat\\;\\ echo\\ bad\\ \\>\\&2\\;\\ exit\\ 2 failed with return code 2.\n"
            // What a run leaves in errno depends on its timing.
            "Stdin is\nin\nStdout is\nin\nStderr is\nbad\n" +
                (cmd.lastError.empty() ? "" : "Last error is\n" + cmd.lastError + "\n"));
    }
    EXPECT_TRUE(cmd.started);
    EXPECT_TRUE(cmd.finished);
}

TEST(ExecCmd, BlocksOfEmptyTextsAreLeftOut) {
    ExecCmd cmd("/x/tool");
    cmd.addArg("--a");
    cmd.status = -1;
    cmd.stderrData = "text\n";
    try {
        cmd.reportError();
    } catch (const ExecCmd::ExFailed& e) {
        EXPECT_STREQ(e.what(), "Execution of /x/tool --a failed with return code -1.\nStderr is\ntext\n");
    }
    EXPECT_EQ(cmd.describeResult(),
              "The return code was -1 \nNo output on STDOUT were performed by the utility"
              " \nThe output on STDERR was: \ntext\n");
    cmd.lastError = "why";
    EXPECT_THAT(cmd.describeResult(), EndsWith(" \nThe last error was: \nwhy"));
}

TEST(ExecCmd, FailureCarriesItsNameAndFixedPosition) {
    struct Facts : ExInfoVisitor {
        std::string all;

        void OnName(const std::string& v) override { all += v + "|"; }

        void OnMessage(const std::string&) override {}

        void OnFunction(const std::string& v) override { all += v + "|"; }

        void OnFile(const std::string& v) override { all += v + "|"; }

        void OnLine(int v) override { all += std::to_string(v) + "|"; }

        void OnInner() override {}

        void OnSeverity(int) override {}
    } facts;

    try {
        ExecCmd("/x/tool").reportError();
    } catch (const ExTraceableBase<ExDefault>& e) {
        e.Accept(facts);
    }
    EXPECT_EQ(facts.all,
              "void brask::ExecCmd::reportError() const|lib/process/lib/ExecCmd|76|ExecCmd::ExFailed|");
}

TEST(ExecCmd, TheLastErrorOfAGoodRunIsNoFailure) {
    ExecCmd cmd("true");
    EXPECT_NO_THROW(cmd.run());
    cmd.errnoValue = EIO;
    cmd.lastError = "of a run before";
    EXPECT_NO_THROW(cmd.run());
    EXPECT_NE(cmd.errnoValue, EIO);
    EXPECT_EQ(cmd.lastError, cmd.errnoValue != 0 ? strerror(cmd.errnoValue) : "");
}

TEST(ExecCmd, ASecondRunAddsToTheOutputs) {
    ExecCmd cmd("sh");
    script(cmd, "echo run; test \"$AGAIN\" || exit 5");
    EXPECT_EQ(cmd.execute(), 5);
    cmd.setEnv("AGAIN", "no");
    cmd.setEnv("AGAIN", "yes");
    EXPECT_EQ(cmd.execute(), 0);
    EXPECT_EQ(cmd.stdoutData, "run\nrun\n");
    EXPECT_EQ(cmd.status, 0);
}

TEST(ExecCmd, ExceptionsPassRunAndStopAtExec) {
    struct Raising : ExecCmd {
        using ExecCmd::ExecCmd;

        int execute() override { throw std::runtime_error("cannot fork"); }
    } cmd("/x/tool");

    EXPECT_EQ(cmd.exec(), -1);
    cmd.status = 4;
    EXPECT_EQ(cmd.exec(), 4);
    EXPECT_THROW(cmd.run(), std::runtime_error);
}

TEST(ExecCmd, AMissingProgramIsStatusOneWithTheReason) {
    ExecCmd cmd("/nonexistent/tool");
    EXPECT_EQ(cmd.exec(), 1);
    EXPECT_THAT(cmd.stdoutData, HasSubstr(": forkExecvPipes: execv() failed: No such file or directory\n"));
    EXPECT_EQ(cmd.stderrData, cmd.stdoutData);
}

} // namespace
