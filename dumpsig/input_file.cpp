#include "dumpsig/input_file.h"

#include "commons/errors/system_error.h"
#include "dumpsig/command_line.h"
#include "dumpsig/output.h"

#include <algorithm>

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

namespace dumpsig {

namespace {

struct stat statusOf(const InputFile& file) {
    struct stat status = {};
    if (fstat(file.descriptor(), &status) != 0) {
        brask::throwSystemError(file.name(), errno);
    }
    return status;
}

/// Waits until a descriptor that someone else has made non-blocking has something to read.
void waitForInput(int fd) {
    pollfd wanted{.fd = fd, .events = POLLIN, .revents = 0};
    poll(&wanted, 1, -1);
}

} // namespace

std::string shownName(const std::string& path) {
    const std::string name = path.empty() ? "\"\"" : path;
    return path == kStandardStream ? "standard input" : name;
}

InputFile::InputFile(const std::string& path)
    : InputFile(path,
                Descriptor(path == kStandardStream
                               ? STDIN_FILENO
                               : TEMP_FAILURE_RETRY(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)))) {
    if (file.get() == -1) {
        brask::throwSystemError(messageName, errno);
    }
    if (S_ISDIR(statusOf(*this).st_mode)) {
        brask::throwSystemError(messageName, EISDIR);
    }
}

std::optional<std::uint64_t> InputFile::size() const {
    const struct stat status = statusOf(*this);
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    const off_t place = std::max<off_t>(lseek(file.get(), 0, SEEK_CUR), 0);
    return static_cast<std::uint64_t>(std::max<off_t>(status.st_size - place, 0));
}

std::size_t InputFile::readSome(char* buffer, std::size_t size) {
    while (true) {
        const ssize_t count = read(file.get(), buffer, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno == EAGAIN) {
            waitForInput(file.get());
        } else if (errno != EINTR) {
            brask::throwSystemError(messageName, errno);
        }
    }
}

std::size_t InputFile::readFully(char* buffer, std::size_t size) {
    std::size_t total = 0;
    while (total < size) {
        const std::size_t count = readSome(buffer + total, size - total);
        if (count == 0) {
            break;
        }
        total += count;
    }
    return total;
}

Tail InputFile::readTail(std::size_t limit) const {
    const auto end = static_cast<std::uint64_t>(statusOf(*this).st_size);
    std::string bytes(std::min<std::uint64_t>(end, limit), '\0');
    std::size_t total = 0;
    while (total < bytes.size()) {
        const ssize_t count = TEMP_FAILURE_RETRY(pread(file.get(), bytes.data() + total, bytes.size() - total,
                                                       static_cast<off_t>(end - bytes.size() + total)));
        if (count < 0) {
            brask::throwSystemError(messageName, errno);
        }
        if (count == 0) {
            BRASK_THROW(FileError, messageName, "shrank while it was read");
        }
        total += static_cast<std::size_t>(count);
    }
    return {.bytes = std::move(bytes), .end = end};
}

} // namespace dumpsig
