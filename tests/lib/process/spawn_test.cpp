#include "commons/errors/system_error.h"
#include "lib/process/lib/fork_exec.h"
#include "lib/process/lib/spawn.h"
#include "tests/support/refused_call.h"
#include "tests/support/support.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>

namespace {

using namespace test_support;

class Spawn : public testing::Test {
protected:
    static std::vector<char*> shell(std::string& script) {
        return {const_cast<char*>("sh"), const_cast<char*>("-c"), script.data(), nullptr};
    }

    /// Runs a script as root, which is no switch of identity.
    int run(std::string script, const std::string& input, const std::map<std::string, std::string>& env) {
        return forkExecvGetOutErr(input, output, error, "sh", shell(script), "root", true, env);
    }

    std::string output;
    std::string error;
};

TEST_F(Spawn, MegabytesGoThroughAllThreePipesInOrder) {
    std::string input;
    for (int i = 0; input.size() < 5'000'000; ++i) {
        input += std::to_string(i) + '\n';
    }
    EXPECT_EQ(run("tee /proc/self/fd/2", input, {}), 0);
    EXPECT_TRUE(output == input && error == input) << output.size() << " " << error.size();
}

TEST_F(Spawn, GivesTheExitCodeOrMinusOneAndAddsToTheOutput) {
    const std::tuple<std::string, int, std::string> cases[] = {
        {"echo said; exit 255", 255, "said\n"},
        {"echo said; kill -KILL $$", -1, "said\n"},
        {"(sleep 0.3; echo late) & exit 4", 4, "late\n"},
        {"echo $HOME $GIVEN; test \"$PATH\"", 0, "new b\n"},
    };
    for (const auto& [script, status, said] : cases) {
        output = "kept ";
        EXPECT_EQ(run(script, "", {{"HOME", "new"}, {"GIVEN", "b"}}), status) << script;
        EXPECT_EQ(output, "kept " + said) << script;
    }
}

TEST_F(Spawn, TheShorterFormsLeaveOutWhatTheyDoNotName) {
    std::string script = "echo $0 $V; echo e >&2; exit 5";
    EXPECT_EQ(forkExecvGetOutErr(output, error, "sh", shell(script), "", false, {{"V", "v"}}), 5);
    EXPECT_EQ(forkExecvGetOutErr(output, error, "sh", shell(script)), 5);
    EXPECT_EQ(forkExecvGetOutErr(output, "sh", shell(script)), 5);
    EXPECT_EQ(forkExecvGetOutErr(output, error, {"sh", "-c", script}), 5);
    EXPECT_EQ(output, "sh v\nsh\nsh\nsh\n");
    EXPECT_EQ(error, "e\ne\ne\n");
}

TEST_F(Spawn, SignalsThatInterruptTheTalkOrTheWaitChangeNothing) {
    const auto caller = inChild([this] {
        struct sigaction interrupting = {};
        interrupting.sa_handler = [](int) {};
        sigaction(SIGALRM, &interrupting, nullptr);
        const itimerval often{{0, 10'000}, {0, 10'000}};
        setitimer(ITIMER_REAL, &often, nullptr);
        printf("%d ", run("sleep 0.1; echo said; exec >&- 2>&-; sleep 0.1; exit 7", "", {}));
        printf("%s", output.c_str());
    });
    EXPECT_EQ(caller.out + caller.err, "7 said\n");
}

TEST_F(Spawn, ACallbackThatThrowsEndsTheChildBeforeItsExceptionGoesOn) {
    std::string script = "echo line; exec sleep 600";
    InputCallback* const noInput = [](char*, size_t, void*) -> size_t { return 0; };
    OutputCallback* const refuse = [](const char*, size_t, void*) { throw std::length_error("enough"); };
    const auto run = [&] {
        forkExecvGetOutErr(noInput, refuse, nullptr, "sh", shell(script), "", false, {}, nullptr, 9, 9, 9);
    };
    EXPECT_THROW(run(), std::length_error);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST_F(Spawn, AnExceptionInTheChildGoesOnInTheChild) {
    const auto caller = inChild([this] {
        run("true", "", {{"IN=VALID", ""}});
        printf("%s", error.c_str()); // not done by the child, whose exception goes past it
    });
    EXPECT_EQ(caller.out, "forkExecvPipes: setenv() falied: Invalid argument");
}

TEST_F(Spawn, TooManyDescriptorsForSelectAreAnErrorWithoutAChild) {
    const auto caller = inChild([this] {
        const rlimit limit{2048, 2048};
        setrlimit(RLIMIT_NOFILE, &limit);
        while (dup(STDOUT_FILENO) < FD_SETSIZE - 6) {
        }
        printf("%d; ", run("true", "", {})); // the last pipe is read at FD_SETSIZE - 1
        const auto opened = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
        [[maybe_unused]] const int last = dup(STDOUT_FILENO);
        const auto before = opened();
        printf("%s; ", thrownText<SystemError>([&] { run("true", "", {}); }).c_str());
        printf("%ld leaked, a child: %d", opened() - before, waitpid(-1, nullptr, 0) != -1);
    });
    EXPECT_EQ(caller.out, "0; forkExecvGetOutErr: descriptors too high for select(): Too many open files; "
                          "0 leaked, a child: 0");
}

TEST_F(Spawn, TheChildInheritsNoDescriptorAboveTwo) {
    // 150 are more than the walk of the listing does in a table of this size, so the rest is swept.
    for (const auto& [open, hasCloseRange] :
         {std::pair(5, true), std::pair(5, false), std::pair(150, false)}) {
        const auto child = inChild([&] {
            const rlimit limit{1024, 1024};
            setrlimit(RLIMIT_NOFILE, &limit);
            for (int i = 0; i < open; ++i) {
                dup2(STDOUT_FILENO, 3 + i);
            }
            // What /proc shows of a process whose memory is private is root's.
            [[maybe_unused]] const int refused = open == 5 ? setuid(65534) : 0;
            prctl(PR_SET_DUMPABLE, 0);
            if (!hasCloseRange) {
                refuseCall(SYS_close_range, ENOSYS); // as kernels before 5.9 do
            }
            run("echo /proc/$$/fd/*", "", {});
            printf("%s", output.c_str());
        });
        // The listing itself takes one.
        EXPECT_THAT(child.out, MatchesRegex("(/proc/[0-9]+/fd/[0-3][ \n]){4}")) << open << hasCloseRange;
    }
}

TEST(StrictNumber, TakesOnlyCanonicalNumbers) {
    EXPECT_EQ(parseStrictNumber("0"), 0);
    EXPECT_EQ(parseStrictNumber("2147483647"), 2147483647);
    for (const char* text : {"2147483648", "01", "", "-1", "+1", " 1", "1 ", "12a", "99999999999999999999"}) {
        EXPECT_EQ(parseStrictNumber(text), -1) << text;
    }
}

} // namespace
