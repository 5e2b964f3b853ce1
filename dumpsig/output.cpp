#include "dumpsig/output.h"

#include "commons/errors/system_error.h"
#include "dumpsig/text_line.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

namespace dumpsig {

namespace {

/// Waits until a descriptor that someone else has made non-blocking takes more.
void waitForRoom(int fd) {
    pollfd wanted{.fd = fd, .events = POLLOUT, .revents = 0};
    poll(&wanted, 1, -1);
}

} // namespace

void writeAll(int fd, std::string_view bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            waitForRoom(fd);
        } else if (errno != EINTR) {
            brask::throwSystemError(name, errno);
        }
    }
}

void writeToStandardOutput(std::string_view bytes) {
    writeAll(STDOUT_FILENO, bytes, "standard output");
}

void complain(std::string_view text) {
    try {
        writeAll(STDERR_FILENO, "dumpsig: " + oneLine(text) + "\n", "standard error");
    } catch (const brask::SystemError&) {
        // Nobody is left to be told; the exit code still tells.
    }
}

} // namespace dumpsig
