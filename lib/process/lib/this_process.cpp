#include "lib/process/lib/this_process.h"

#include "commons/errors/system_error.h"

#include <cerrno>
#include <csignal>
#include <ctime>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

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

void reserveStandardStreams() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open takes the lowest free number, which is this one. Opened the wrong way round, it fails as it
        // did closed.
        if (fcntl(fd, F_GETFD) == -1 && open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) {
            throwErrno("/dev/null");
        }
    }
}

void keepMemoryPrivate() {
#ifdef NDEBUG
    prctl(PR_SET_DUMPABLE, 0); // can't fail with this argument
#endif
}

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
