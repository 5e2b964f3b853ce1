#include "commons/files/shared_file.h"

#include "commons/errors/format.h"
#include "commons/files/file_utils.h"
#include "commons/log/log_facade.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace brask {

SharedFile::SharedFile(const std::string& path, uid_t owner, gid_t group, mode_t mode)
    : path_(path), fd_(static_cast<int>(TEMP_FAILURE_RETRY(open(path.c_str(), O_RDWR | O_CREAT, mode)))) {
    if (fd_ == -1) {
        raiseSystemError("Failed to open the file {}");
    }
    if (fchown(fd_, owner, group) == -1) {
        raiseSystemError("Failed to change ownership of the file '{}'");
    }
}

SharedFile::~SharedFile() {
    try {
        callNoThrow([this] { unlock(); }, formatMessage("Failed to unlock the file {} explicitly", path_));
    } catch (const std::exception&) { // The log can't be told. Closing gives the lock up as well.
    }
    TEMP_FAILURE_RETRY(close(fd_));
}

void SharedFile::lockExclusive() {
    if (lockMode_ == LockMode::Shared) {
        throw std::runtime_error(formatMessage("The file {} has already locked in the shared mode", path_));
    }
    lock(LOCK_EX, LockMode::Exclusive);
}

void SharedFile::lockShared() {
    if (lockMode_ == LockMode::Exclusive) {
        throw std::runtime_error(
            formatMessage("The file {} has already locked in the exclusive mode", path_));
    }
    lock(LOCK_SH, LockMode::Shared);
}

void SharedFile::lock(int operation, LockMode mode) {
    if (lockMode_ == mode) {
        return;
    }
    if (TEMP_FAILURE_RETRY(flock(fd_, operation)) == -1) {
        raiseSystemError("Failed to lock the file {}");
    }
    lockMode_ = mode;
}

void SharedFile::unlock() {
    if (lockMode_ == LockMode::None) {
        return;
    }
    if (TEMP_FAILURE_RETRY(flock(fd_, LOCK_UN)) == -1) {
        raiseSystemError("Failed to unlock the file {}");
    }
    lockMode_ = LockMode::None;
}

void SharedFile::Append(std::string data) {
    underExclusiveLock([&] { writeAtEnd(data); });
}

void SharedFile::AppendLine(const std::string& line) {
    underExclusiveLock([&] { writeAtEnd((endsInsideLine() ? "\n" : "") + line + "\n"); });
}

void SharedFile::underExclusiveLock(const std::function<void()>& step) {
    const bool takesLock = lockMode_ != LockMode::Exclusive;
    if (takesLock) {
        lockExclusive();
    }
    try {
        step();
        if (takesLock) {
            unlock();
        }
    } catch (...) {
        if (takesLock) {
            callNoThrow([this] { unlock(); },
                        formatMessage("Unable to unlock the file {} after a failure", path_));
        }
        throw;
    }
}

bool SharedFile::endsInsideLine() const {
    const off_t end = seekEnd();
    char last = '\n';
    if (end > 0 && TEMP_FAILURE_RETRY(pread(fd_, &last, 1, end - 1)) == -1) {
        raiseSystemError("Failed to read the file {}");
    }
    return last != '\n';
}

off_t SharedFile::seekEnd() const {
    const off_t end = lseek(fd_, 0, SEEK_END);
    if (end == -1) {
        raiseSystemError("Failed to seek the end of the file {}");
    }
    return end;
}

void SharedFile::writeAtEnd(const std::string& data) const {
    // Not O_APPEND: the seek under the lock is what keeps the records together.
    seekEnd();
    if (!writeAll(fd_, data.data(), data.size())) {
        raiseSystemError("Failed to write the file {}");
    }
}

void SharedFile::raiseSystemError(const char* messageTemplate) const {
    const int code = errno;
    throw std::system_error(code, std::system_category(), formatMessage(messageTemplate, path_));
}

} // namespace brask
