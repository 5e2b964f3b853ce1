#include "lib/process/lib/child_io.h"

#include "commons/errors/system_error.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace brask {

bool readToCallback(int fd, OutputCallback* callback, void* context, char* buffer, size_t bufferSize) {
    for (;;) {
        const ssize_t length = read(fd, buffer, bufferSize);
        if (length == 0) {
            return false;
        }
        if (length > 0) {
            if (callback != nullptr) {
                callback(buffer, static_cast<size_t>(length), context);
            }
        } else if (errno == EAGAIN) {
            return true;
        } else if (errno != EINTR) {
            throwSystemError("readToCallback failed", errno);
        }
    }
}

bool writeFromCallback(int fd, char* buffer, size_t bufferSize, size_t& pendingBytes, InputCallback* callback,
                       void* context) {
    for (;;) {
        if (pendingBytes == 0) {
            pendingBytes = callback(buffer, bufferSize, context);
            if (pendingBytes == 0) {
                return false;
            }
        }
        const ssize_t length = write(fd, buffer, pendingBytes);
        if (length >= 0) {
            const auto written = static_cast<size_t>(length);
            pendingBytes -= written;
            memmove(buffer, buffer + written, pendingBytes);
        } else if (errno == EAGAIN) {
            return true;
        } else if (errno == EPIPE) {
            return false;
        } else if (errno != EINTR) {
            throwSystemError("writeFromCallback failed", errno);
        }
    }
}

} // namespace brask
