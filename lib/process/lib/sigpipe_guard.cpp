#include "lib/process/lib/sigpipe_guard.h"

#include <cerrno>
#include <csignal>
#include <ctime>

namespace brask {

namespace {

// Whether SIGPIPE is blocked in this thread by a guard. Only the outermost guard finds the signal unblocked,
// so one flag serves all that nest.
thread_local bool blockedByGuard = false;

sigset_t sigpipeOnly() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

bool isSigpipePending() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

void takePendingSigpipe() {
    const sigset_t set = sigpipeOnly();
    const timespec noWait{};
    while (sigtimedwait(&set, nullptr, &noWait) == -1 && errno == EINTR) {
    }
}

} // namespace

SigpipeGuard::SigpipeGuard() : wasPending(isSigpipePending()) {
    const sigset_t set = sigpipeOnly();
    sigset_t before;
    sigemptyset(&before);
    pthread_sigmask(SIG_BLOCK, &set, &before);
    wasBlocked = sigismember(&before, SIGPIPE) == 1;
    blockedByGuard = blockedByGuard || !wasBlocked;
}

SigpipeGuard::~SigpipeGuard() {
    const int error = errno;
    if (!wasPending && isSigpipePending()) {
        takePendingSigpipe();
    }
    if (!wasBlocked) {
        blockedByGuard = false;
        const sigset_t set = sigpipeOnly();
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }
    errno = error;
}

void unblockGuardedSigpipe() {
    if (blockedByGuard) {
        const sigset_t set = sigpipeOnly();
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }
}

} // namespace brask
