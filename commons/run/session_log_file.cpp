#include "commons/run/session_log_file.h"

#include "commons/run/session_files.h"
#include "lib/process/lib/identity.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brask {

namespace {

constexpr int kFlags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC;

int makeFile(const std::string& path) {
    const int fd = open(path.c_str(), kFlags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    if (fd != -1) {
        // Best effort: an ordinary user can't give a file away.
        [[maybe_unused]] const int ignored = fchown(fd, static_cast<uid_t>(-1), groupId("bsaadm"));
        fchmod(fd, S_IRUSR | S_IWUSR | S_IRGRP);
    }
    return fd;
}

int openFile(const std::string& path) {
    // A pipe that nobody reads must not hold the run up.
    const int fd = open(path.c_str(), kFlags | O_NONBLOCK | O_NOCTTY);
    struct stat info = {};
    const int result = fd != -1 ? fstat(fd, &info) : lstat(path.c_str(), &info);
    if (result == 0 && !S_ISREG(info.st_mode)) {
        close(fd);
        throwUnusableSession();
    }
    return fd;
}

} // namespace

SessionLogFile::SessionLogFile(const std::string& path) : path(path), fd(makeFile(path)) {
    if (fd == -1 && errno == EEXIST) {
        isKept = true;
        fd = openFile(path);
    }
}

SessionLogFile::~SessionLogFile() {
    if (!isKept && isUnusedAndOurs()) {
        unlink(path.c_str());
    }
    close(fd);
}

bool SessionLogFile::isUnusedAndOurs() const {
    struct stat open = {};
    struct stat named = {};
    return fstat(fd, &open) == 0 && lstat(path.c_str(), &named) == 0 && open.st_size == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

} // namespace brask
