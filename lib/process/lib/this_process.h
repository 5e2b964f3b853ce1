#pragma once

// What a program sees to for its own process: its standard streams and its memory, first of all in main, and
// SIGPIPE wherever it writes to a pipe.

namespace brask {

/// Makes sure that descriptors 0 to 2 are taken. A caller may have closed them, and a file that is opened in
/// their place would get what is printed. Raises std::system_error.
void reserveStandardStreams();

/// In a release build: keeps what is in memory, a private key for one, out of core files and away from other
/// processes of the same user. The programs that this one starts are not affected. A debug build can be
/// debugged as any other.
void keepMemoryPrivate();

/// While it lives, writing to a pipe that nobody reads fails with EPIPE in this thread instead of killing the
/// process:
///
///     const SigpipeGuard guard;
///     const int status = helper.exec();   // a helper that dies early costs its status, not our life
///
/// SIGPIPE is blocked in the thread's mask; its disposition is not touched. A SIGPIPE that became pending
/// meanwhile is taken off at the end; one that was pending before, and a block that was there before, are
/// left alone. A child that forkExecvPipes starts meanwhile begins with the mask the caller had. Guards nest;
/// each ends in the thread that began it.
class SigpipeGuard {
public:
    SigpipeGuard();
    ~SigpipeGuard();

    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;

private:
    bool wasPending;
    bool wasBlocked;
};

/// Takes the guards' block, if there is one, off a forked child's mask.
void unblockGuardedSigpipe();

} // namespace brask
