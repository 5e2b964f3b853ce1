#include "commons/system_error.h"
#include "lib/process/lib/spawn.h"
#include "lib/process/lib/strict_number.h"
#include "tests/support/child.h"
#include "tests/support/scoped_env.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::inChild;
using testing::HasSubstr;

/// An argument vector that runs a shell script.
class Script {
public:
    explicit Script(std::string text) : text(std::move(text)) {}

    std::vector<char*> argv() { return {path.data(), option.data(), text.data(), nullptr}; }

    std::string path = "sh";

private:
    std::string option = "-c";
    std::string text;
};

class Spawn : public testing::Test {
protected:
    int run(const std::string& text, const std::string& input = "",
            const std::map<std::string, std::string>& env = {}) {
        Script script(text);
        return forkExecvGetOutErr(input, output, error, script.path, script.argv(), "", false, env);
    }

    std::string output;
    std::string error;
};

TEST_F(Spawn, MegabytesGoThroughAllThreePipesInOrder) {
    std::string input;
    for (int i = 0; input.size() < 5'000'000; ++i) {
        input += std::to_string(i) + '\n';
    }
    EXPECT_EQ(run("tee /proc/self/fd/2", input), 0);
    EXPECT_TRUE(output == input) << output.size();
    EXPECT_TRUE(error == input) << error.size();
}

TEST_F(Spawn, TheStatusIsTheExitCodeOrMinusOne) {
    const struct {
        const char* script;
        int status;
    } cases[] = {{"exit 0", 0}, {"exit 255", 255}, {"kill -KILL $$", -1}, {"kill -TERM $$", -1}};

    for (const auto& c : cases) {
        output = "kept ";
        EXPECT_EQ(run("echo said; " + std::string(c.script)), c.status) << c.script;
        EXPECT_EQ(output, "kept said\n") << c.script;
    }
}

TEST_F(Spawn, GivenVariablesWinOverInheritedOnes) {
    const test_support::ScopedEnv inherited("BRASK_TEST_A", "old");
    const test_support::ScopedEnv kept("BRASK_TEST_C", "inherited");
    run("echo $BRASK_TEST_A $BRASK_TEST_B $BRASK_TEST_C", "",
        {{"BRASK_TEST_A", "new"}, {"BRASK_TEST_B", "b"}});
    EXPECT_EQ(output, "new b inherited\n");
}

TEST_F(Spawn, ACallWaitsForWhoeverHoldsThePipes) {
    EXPECT_EQ(run("(sleep 0.3; echo late) & exit 4"), 4);
    EXPECT_EQ(output, "late\n");
}

TEST_F(Spawn, ArgumentListsNeedAProgram) {
    EXPECT_THROW(forkExecvGetOutErr(output, error, std::vector<std::string>{}), std::out_of_range);
    EXPECT_EQ(forkExecvGetOutErr(output, error, {"sh", "-c", "cat; echo \"$0\"", "zero"}), 0);
    EXPECT_EQ(output, "zero\n");
}

TEST_F(Spawn, UnknownUsersAndRootAreNoSwitch) {
    for (const char* user : {"root", "no-such-user"}) {
        output.clear();
        EXPECT_EQ(forkExecvGetOutErr(output, error, {"id", "-u"}, user, true, {}), 0);
        EXPECT_EQ(output, std::to_string(geteuid()) + "\n") << user;
    }
}

TEST_F(Spawn, NullDescriptorsAreDevNull) {
    Script script("read line || test \"$(readlink /proc/$$/fd/1)$(readlink /proc/$$/fd/2)\" = "
                  "/dev/null/dev/null && exit 7");
    const pid_t pid = forkExecvPipes(-1, -1, -1, script.path, script.argv(), "", false, {});
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

/// Sends "ab" to the child `leftToSend` times, and counts or refuses what comes back.
struct Talk {
    int leftToSend;
    size_t received;
    bool throwOnOutput;
};

size_t sendTwo(char* buffer, size_t capacity, void* context) {
    auto& talk = *static_cast<Talk*>(context);
    if (talk.leftToSend-- <= 0) {
        return 0;
    }
    return std::string("ab").copy(buffer, capacity);
}

void receive(const char*, size_t length, void* context) {
    auto& talk = *static_cast<Talk*>(context);
    if (talk.throwOnOutput) {
        throw std::length_error("enough");
    }
    EXPECT_LE(length, 3U);
    talk.received += length;
}

TEST(SpawnCallbacks, TinyBuffersAndDroppedOutputLoseNothingElse) {
    Talk talk{.leftToSend = 50'000, .received = 0, .throwOnOutput = false};
    Script script("tee /proc/self/fd/2");
    EXPECT_EQ(forkExecvGetOutErr(sendTwo, nullptr, receive, script.path, script.argv(), "", false, {}, &talk,
                                 2, 1, 3),
              0);
    EXPECT_EQ(talk.received, 100'000U);
}

TEST(SpawnCallbacks, ACallbackThatThrowsEndsTheChildBeforeItsExceptionGoesOn) {
    Talk talk{.leftToSend = 0, .received = 0, .throwOnOutput = true};
    Script script("echo $$; exec sleep 600");
    EXPECT_THROW(forkExecvGetOutErr(sendTwo, receive, receive, script.path, script.argv(), "", false, {},
                                    &talk, 4096, 4096, 4096),
                 std::length_error);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(Spawn, AnExceptionInTheChildGoesOnInTheChild) {
    const auto caller = inChild([&] {
        const pid_t self = getpid();
        try {
            const int status = run("true", "", {{"IN=VALID", ""}});
            printf("%d %s", status, output.c_str());
        } catch (const SystemError& e) {
            printf("%s in the %s", e.what(), getpid() == self ? "caller" : "child");
            fflush(stdout);
            _exit(9);
        }
    });
    EXPECT_EQ(caller.out, "9 forkExecvPipes: setenv() falied: Invalid argument in the child");
}

TEST_F(Spawn, TheChildInheritsNoDescriptorAboveTwo) {
    // 150 are more than the walk of the listing does in a table of this size, so the rest is swept.
    for (const int open : {5, 150}) {
        const auto child = inChild([&] {
            const rlimit limit{1024, 1024};
            setrlimit(RLIMIT_NOFILE, &limit);
            for (int i = 0; i < open; ++i) {
                dup2(0, 10 + i);
            }
            run("echo /proc/$$/fd/*");
            printf("%s", output.c_str());
        });
        // The listing itself takes one.
        EXPECT_EQ(std::count(child.out.begin(), child.out.end(), '/'), 4 * 4) << child.out;
        EXPECT_THAT(child.out, HasSubstr("/fd/3\n"));
    }
}

TEST(Closefrom, ClosesFromTheGivenDescriptorOn) {
    for (const int open : {15, 150}) {
        const auto child = inChild([&] {
            const rlimit limit{1024, 1024};
            setrlimit(RLIMIT_NOFILE, &limit);
            for (int i = 0; i < open; ++i) {
                dup2(0, 10 + i);
            }
            brask::closefrom(12);
            for (int fd = 10; fd < 10 + open; ++fd) {
                if (fcntl(fd, F_GETFD) != -1) {
                    printf("%d ", fd);
                }
            }
        });
        EXPECT_EQ(child.out, "10 11 ") << open;
    }
}

TEST(StrictNumber, TakesOnlyCanonicalNumbers) {
    const struct {
        const char* text;
        int value;
    } cases[] = {{"0", 0},
                 {"7", 7},
                 {"2147483647", 2147483647},
                 {"2147483648", -1},
                 {"01", -1},
                 {"00", -1},
                 {"", -1},
                 {"-1", -1},
                 {"+1", -1},
                 {" 1", -1},
                 {"1 ", -1},
                 {"12a", -1},
                 {"99999999999999999999", -1},
                 {nullptr, -1}};

    for (const auto& c : cases) {
        errno = EIO;
        EXPECT_EQ(parseStrictNumber(c.text), c.value) << (c.text != nullptr ? c.text : "null");
        EXPECT_TRUE(c.value == -1 || errno == EIO);
    }
}

} // namespace
