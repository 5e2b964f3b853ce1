#include "commons/errors/text_formatters.h"
#include "lib/process/lib/ExecCmd.h"
#include "lib/process/lib/this_process.h"
#include "tests/support/support.h"

namespace {

using namespace test_support;

TEST(ExecCmd, RunTellsAllThatIsKnownOfAFailure) {
    ExecCmd cmd("sh");
    cmd.addArg("-c").addArg("cat; echo $1 >&2; exit 2").addArg("").addArg("a b");
    cmd.stdinData = "in\n";
    const std::string text = thrownText<ExecCmd::ExFailed>([&] { cmd.run(); });
    // What a run leaves in errno depends on its timing.
    const std::string last = cmd.lastError.empty() ? "" : "Last error is\n" + cmd.lastError + "\n";
    EXPECT_EQ(text,
              "Execution of sh -c cat\\;\\ echo\\ \\$1\\ \\>\\&2\\;\\ exit\\ 2 '' a\\ b failed with return "
              "code 2.\nStdin is\nin\nStdout is\nin\nStderr is\na b\n" +
                  last);
}

TEST(ExecCmd, AFailureIsKnownByItsPlace) {
    struct Place : TextMsgFormatter {
        void OnLine(int line) override {
            EXPECT_EQ(line, 76);
            TextMsgFormatter::OnLine(line);
        }
    } place;

    try {
        ExecCmd("false").run();
    } catch (const ExecCmd::ExFailed& e) {
        e.Accept(place);
    }
    place.Flush();
    EXPECT_THAT(
        place.GetResult(),
        EndsWith(" [lib/process/lib/ExecCmd:ExecCmd::ExFailed] \nvoid brask::ExecCmd::reportError() const"));
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
    EXPECT_TRUE(!cmd.started && !cmd.finished && cmd.errnoValue == 0);
    EXPECT_EQ(cmd.exec(), 1);
    EXPECT_TRUE(cmd.started && cmd.finished);
    EXPECT_EQ(cmd.lastError.empty(), cmd.errnoValue == 0);
    const std::string reason = ".*: forkExecvPipes: execv\\(\\) failed: No such file or directory\n";
    EXPECT_THAT(cmd.describeResult(),
                MatchesRegex("The return code was 1.*STDOUT" + reason + ".*STDERR" + reason + ".*"));
}

TEST(ShellEscape, MarksWhatAShellWouldTakeForItsOwnAndLeavesTheRest) {
    const std::string letters = "Az09!%+,-./:=@]^_{}\r\x7F\xC3\xA4";
    EXPECT_EQ(escapeForShell(letters), letters);
    EXPECT_EQ(escapeForShell("\t \"#$&'()*;<>?[\\`|~\n"),
              "\\\t\\ \\\"\\#\\$\\&\\'\\(\\)\\*\\;\\<\\>\\?\\[\\\\\\`\\|\\~'\n'");
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    const char* const words[] = {"a-b", "a b"};
    EXPECT_NO_THROW(checkEscapeChars(words));
    EXPECT_THROW(checkEscapeChars(words + 1), std::runtime_error);
    const std::shared_ptr<char> escaped(backslashEscape("a-", "banana-"), std::free);
    EXPECT_STREQ(escaped.get(), "b\\an\\an\\a\\-");
    EXPECT_EQ(backslashEscape(nullptr, ""), nullptr);
    for (const std::string& word : {escapeForShell(all), shellQuote(all)}) {
        EXPECT_EQ(runProgram({"/bin/sh", "-c", "printf %s x" + word}).out, "x" + all);
    }
}

/// Feeds a megabyte to a child that reads none of it, tells its signal mask, and exits at once.
void feedDeafChild() {
    fflush(stdout);
    ExecCmd deaf("sh");
    deaf.addArg("-c").addArg("exec <&-; grep SigBlk /proc/self/status | tail -c 5; exit 3");
    deaf.stdinData.assign(1 << 20, 'x');
    printf("%d after %s", deaf.execute(), deaf.stdoutData.c_str());
}

TEST(SigpipeGuard, WhileItLivesADeafChildCostsItsStatusOnlyAndTheCallersOwnBlockStays) {
    for (const bool isBlocked : {false, true}) {
        const auto child = inChild([&] {
            sigset_t pending;
            sigset_t sigpipe;
            sigemptyset(&sigpipe);
            sigaddset(&sigpipe, SIGPIPE);
            if (isBlocked) {
                sigprocmask(SIG_BLOCK, &sigpipe, nullptr);
                raise(SIGPIPE);
            }
            {
                const SigpipeGuard outer;
                const SigpipeGuard inner;
                feedDeafChild();
            }
            sigpending(&pending);
            printf("pending: %d\n", sigismember(&pending, SIGPIPE));
            sigprocmask(SIG_BLOCK, &sigpipe, nullptr);
            feedDeafChild();
            fflush(stdout);
            sigprocmask(isBlocked ? SIG_BLOCK : SIG_UNBLOCK, &sigpipe, nullptr);
        });
        EXPECT_EQ(child.out, isBlocked ? "3 after 1000\npending: 1\n3 after 1000\n"
                                       : "3 after 0000\npending: 0\n3 after 1000\n");
        EXPECT_EQ(child.status, isBlocked ? 0 : 128 + SIGPIPE);
    }
}

} // namespace
