#include "lib/process/lib/ExecCmd.h"
#include "lib/process/lib/sigpipe_guard.h"
#include "tests/support/child.h"

#include <gtest/gtest.h>

#include <signal.h>

namespace {

using namespace brask;

/// Feeds a megabyte to a child that reads none of it, tells its signal mask, and exits at once.
void feedDeafChild() {
    fflush(stdout);
    ExecCmd deaf("sh");
    deaf.addArg("-c").addArg("exec <&-; grep SigBlk /proc/self/status | tail -c 5; exit 3");
    deaf.stdinData.assign(1 << 20, 'x');
    printf("%d after %s", deaf.execute(), deaf.stdoutData.c_str());
}

TEST(SigpipeGuard, WhileItLivesADeafChildCostsItsStatusOnly) {
    const auto child = test_support::inChild([] {
        {
            const SigpipeGuard outer;
            const SigpipeGuard inner;
            feedDeafChild();
        }
        printf("alive\n");
        feedDeafChild();
    });
    EXPECT_EQ(child.out, "3 after 0000\nalive\n");
    EXPECT_EQ(child.signal, SIGPIPE);
}

TEST(SigpipeGuard, LeavesTheCallersOwnBlockAndItsPendingSignalAlone) {
    const auto child = test_support::inChild([] {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGPIPE);
        sigprocmask(SIG_BLOCK, &set, nullptr);
        raise(SIGPIPE);
        {
            const SigpipeGuard guard;
            feedDeafChild();
        }
        sigpending(&set);
        printf("pending: %d", sigismember(&set, SIGPIPE));
    });
    EXPECT_EQ(child.out, "3 after 1000\npending: 1");
}

} // namespace
