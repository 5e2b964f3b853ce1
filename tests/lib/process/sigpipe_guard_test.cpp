#include "lib/process/lib/sigpipe_guard.h"
#include "lib/process/lib/spawn.h"
#include "tests/support/child.h"

#include <gtest/gtest.h>

#include <memory>

#include <signal.h>

namespace {

using namespace brask;
using test_support::inChild;

/// Feeds a megabyte to a child that reads none of it.
int feedDeafChild() {
    std::string output;
    std::string error;
    std::string path = "sh";
    std::string option = "-c";
    std::string script = "exec <&-; echo heard nothing; exit 3";
    const std::vector<char*> argv{path.data(), option.data(), script.data(), nullptr};
    const int status =
        forkExecvGetOutErr(std::string(1 << 20, 'x'), output, error, path, argv, "", false, {});
    return output == "heard nothing\n" ? status : -2;
}

void blockSigpipe() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    sigprocmask(SIG_BLOCK, &set, nullptr);
}

bool isPending() {
    sigset_t set;
    sigpending(&set);
    return sigismember(&set, SIGPIPE) == 1;
}

TEST(SigpipeGuard, WithoutItADeafChildKillsTheCaller) {
    EXPECT_EQ(inChild([] { printf("%d", feedDeafChild()); }).signal, SIGPIPE);
}

TEST(SigpipeGuard, UnderItADeafChildCostsItsStatusOnly) {
    const auto child = inChild([] {
        {
            const SigpipeGuard outer;
            const SigpipeGuard inner;
            printf("%d ", feedDeafChild());
        }
        printf("pending %d", isPending());
    });
    EXPECT_EQ(child.out, "3 pending 0");
    EXPECT_EQ(inChild([] {
                  { const SigpipeGuard ended; }
                  feedDeafChild();
              }).signal,
              SIGPIPE);
}

TEST(SigpipeGuard, AChildBeginsWithTheCallersOwnMask) {
    for (const bool callerBlocks : {false, true}) {
        const auto child = inChild([&] {
            if (callerBlocks) {
                blockSigpipe();
            }
            std::string output;
            std::string error;
            const SigpipeGuard outer;
            const auto inner = std::make_unique<SigpipeGuard>();
            forkExecvGetOutErr(output, error, {"sed", "-n", "s/^SigBlk:\\t//p", "/proc/self/status"});
            const auto mask = std::stoull(output, nullptr, 16);
            printf("%d", (mask >> (SIGPIPE - 1) & 1) != 0);
        });
        EXPECT_EQ(child.out, callerBlocks ? "1" : "0");
    }
}

TEST(SigpipeGuard, TakesOnlyWhatBecamePendingMeanwhile) {
    const auto child = inChild([] {
        blockSigpipe();
        {
            const SigpipeGuard guard;
            raise(SIGPIPE);
        }
        printf("arose: %d ", isPending());
        raise(SIGPIPE);
        { const SigpipeGuard guard; }
        printf("was there: %d", isPending());
    });
    EXPECT_EQ(child.out, "arose: 0 was there: 1");
}

} // namespace
