#include "log4cpp_additions/held_file.h"

#include <cstdio>
#include <iomanip>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace log4cpp_additions {

namespace {

/// Best effort: an ordinary user can't give every group away.
void copyAccess(int from, int to) {
    struct stat info = {};
    if (fstat(from, &info) == 0) {
        [[maybe_unused]] const int ignored = fchown(to, static_cast<uid_t>(-1), info.st_gid);
        fchmod(to, info.st_mode & 0777);
    }
}

} // namespace

int takeFile(const OpenLog& openLog, bool append) {
    if (!append) {
        [[maybe_unused]] const int ignored = ftruncate(openLog.descriptor, 0);
    }
    return fcntl(openLog.descriptor, F_DUPFD_CLOEXEC, 0);
}

// Without a file name the base class opens nothing.
HeldRollingFileAppender::HeldRollingFileAppender(const std::string& name, const std::string& fileName,
                                                 int descriptor, std::size_t maxFileSize,
                                                 unsigned int maxBackupIndex)
    : RollingFileAppender(name, "", maxFileSize, maxBackupIndex), path(fileName) {
    _fd = descriptor;
}

void HeldRollingFileAppender::rollOver() {
    for (unsigned int index = _maxBackupIndex; index > 0; --index) {
        std::rename(numbered(index - 1).c_str(), numbered(index).c_str());
    }
    const int next =
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (next != -1) {
        copyAccess(_fd, next);
        ::close(_fd);
        _fd = next;
    }
}

std::string HeldRollingFileAppender::numbered(unsigned int index) const {
    if (index == 0) {
        return path;
    }
    std::ostringstream name;
    name << path << '.' << std::setw(_maxBackupIndexWidth) << std::setfill('0') << index;
    return name.str();
}

} // namespace log4cpp_additions
