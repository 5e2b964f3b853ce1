#include "lib/process/lib/fork_exec.h"

#include "commons/errors/system_error.h"
#include "lib/process/lib/identity.h"
#include "lib/process/lib/this_process.h"
#include "lib/runtime/low_level_log.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <dirent.h>
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

enum class Entry { kRead, kEnd, kError };

Entry readEntry(DIR* directory, dirent64& entry) {
    dirent64* result = nullptr;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    // The one that works on storage of ours: between fork and exec the less is left to the library the
    // better.
    const int error = readdir64_r(directory, &entry, &result);
#pragma GCC diagnostic pop
    if (error != 0) {
        return Entry::kError;
    }
    return result != nullptr ? Entry::kRead : Entry::kEnd;
}

/// Closes the listed descriptors until the listing ends, and says whether it could be followed that far.
bool closeListed(DIR* directory, int lowestFd, bool& ownFdSeen) {
    const int maxOpen = getdtablesize();
    int budget = maxOpen >= 1000 ? maxOpen / 10 : 100;
    for (;;) {
        dirent64 entry;
        switch (readEntry(directory, entry)) {
        case Entry::kError:
            return false;
        case Entry::kEnd:
            return true;
        case Entry::kRead:
            break;
        }
        if (strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0) {
            continue;
        }
        const int fd = parseStrictNumber(entry.d_name);
        if (fd < 0 || fd >= maxOpen) {
            return false;
        }
        if (fd == dirfd(directory)) {
            ownFdSeen = true;
        } else if (fd >= lowestFd) {
            close(fd);
        }
        if (budget <= 0) {
            return false;
        }
        --budget;
    }
}

/// Says whether all descriptors of a listing that can be trusted were walked.
bool closeByListing(int lowestFd) {
    DIR* directory = opendir("/proc/self/fd");
    if (directory == nullptr) {
        return false;
    }
    bool ownFdSeen = false;
    const bool isWhole = closeListed(directory, lowestFd, ownFdSeen);
    closedir(directory);
    // A listing without the descriptor that it is read through is not that of this process.
    return isWhole && ownFdSeen;
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

void closefrom(int lowestFd) {
    const int error = errno;
    // Kernels before 5.9 and the system call filters of some containers have no close_range.
    if (close_range(lowestFd, ~0U, 0) != 0 && !closeByListing(lowestFd)) {
        for (int fd = getdtablesize(); fd >= lowestFd; --fd) {
            close(fd);
        }
    }
    errno = error;
}

int parseStrictNumber(const char* text) {
    if (text == nullptr || *text < '0' || *text > '9' || (text[0] == '0' && text[1] != '\0')) {
        return -1;
    }
    const int previousError = errno;
    errno = 0;
    char* end = nullptr;
    const long value = strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || value > std::numeric_limits<int>::max()) {
        return -1;
    }
    errno = previousError;
    return static_cast<int>(value);
}

} // namespace brask
