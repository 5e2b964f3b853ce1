#include "lib/process/lib/fork_exec.h"

#include "commons/errors/system_error.h"
#include "lib/process/lib/closefrom.h"
#include "lib/process/lib/identity.h"
#include "lib/process/lib/sigpipe_guard.h"
#include "lib/runtime/low_level_log.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace brask {

namespace {

/// An unknown user reads as id 0 here, so root and an unknown user alike leave the identity as it is.
void switchUser(const std::string& user, bool chdirToHome) {
    if (user.empty() || idOfUser(user.c_str(), 0) == 0) {
        return;
    }
    // p_setuid ends the process where it fails; the result is checked for what its contract declares.
    if (p_setuid(user.c_str(), chdirToHome ? 1 : 0, 0) != 0) {
        throwSystemError("forkExecvPipes: p_setuid() to '" + user + "' failed", errno);
    }
}

void extendEnvironment(const std::map<std::string, std::string>& env) {
    for (const auto& [name, value] : env) {
        if (setenv(name.c_str(), value.c_str(), 1) != 0) {
            throwSystemError("forkExecvPipes: setenv() falied", errno);
        }
    }
}

} // namespace

int dup2Custom(int oldFd, int newFd) {
    if (oldFd == newFd) {
        return oldFd;
    }
    if (oldFd == -1) {
        oldFd = open("/dev/null", O_RDWR);
        if (oldFd == -1) {
            throwSystemError("dup2Custom failed", errno);
        }
    }
    const int result = dup2(oldFd, newFd);
    close(oldFd);
    return result;
}

pid_t forkExecvPipes(int stdinFd, int stdoutFd, int stderrFd, const std::string& path,
                     const std::vector<char*>& argv, const std::string& user, bool chdirToHome,
                     const std::map<std::string, std::string>& env) {
    const pid_t pid = fork();
    if (pid == -1) {
        throwSystemError("forkExecvPipes: fork() failed", errno);
    }
    if (pid != 0) {
        return pid;
    }
    // The child. What throws from here on unwinds the caller's stack in this process: see spawn.h.
    unblockGuardedSigpipe();
    dup2Custom(stdinFd, STDIN_FILENO);
    dup2Custom(stdoutFd, STDOUT_FILENO);
    dup2Custom(stderrFd, STDERR_FILENO);
    closefrom(3);
    switchUser(user, chdirToHome);
    extendEnvironment(env);
    execvp(path.c_str(), argv.data());
    ErrorExit(1, "forkExecvPipes: execv() failed: %s\n", strerror(errno));
    return 0; // not reached: ErrorExit with a code other than 0 ends the child
}

} // namespace brask
