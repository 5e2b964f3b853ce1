#include "lib/process/lib/exchange.h"

#include "commons/errors/system_error.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <unistd.h>

namespace brask {

namespace {

/// Drains the non-blocking `fd` and hands the bytes to `callback`, which may be null. True: come back when
/// there is more; false: the stream has ended.
/// Raises SystemError("readToCallback failed"), and passes on what the callback throws.
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

/// Writes to the non-blocking `fd` until the pipe is full. The first `pendingBytes` of `buffer` are still to
/// be written, 0 at first; whenever there are none, `callback`, which must not be null, is asked for more.
/// True: come back when there is room; false: there is no more input, or nobody reads.
/// Raises SystemError("writeFromCallback failed"), and passes on what the callback throws.
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

void closeStream(int& fd) {
    close(fd);
    fd = -1;
}

void watch(int fd, fd_set& set) {
    if (fd != -1) {
        FD_SET(fd, &set);
    }
}

bool isReady(int fd, const fd_set& set) {
    return fd > 0 && FD_ISSET(fd, &set);
}

} // namespace

Exchange::Exchange(const ChildOptions& options)
    : options(options), inputBuffer(options.inputBufferSize), outputBuffer(options.outputBufferSize),
      errorBuffer(options.errorBufferSize) {}

void Exchange::attach(int input, int output, int error) {
    inputFd = input;
    outputFd = output;
    errorFd = error;
    selectWidth = std::max({input, output, error}) + 1;
}

std::exception_ptr Exchange::run(pid_t child) {
    while ((inputFd & outputFd & errorFd) != -1) {
        try {
            round();
        } catch (...) {
            kill(child, SIGTERM);
            closeAll();
            return std::current_exception();
        }
    }
    return nullptr;
}

void Exchange::round() {
    fd_set readable;
    fd_set writable;
    FD_ZERO(&readable);
    FD_ZERO(&writable);
    watch(inputFd, writable);
    watch(outputFd, readable);
    watch(errorFd, readable);
    // After EINTR the sets are as they were passed in. Taking all streams for ready does no harm, as none of
    // them blocks.
    if (select(selectWidth, &readable, &writable, nullptr, nullptr) == -1 && errno != EINTR) {
        throwSystemError("forkExecvGetOutErr: select() failed", errno);
    }
    feed(writable);
    drain(outputFd, readable, options.output, outputBuffer);
    drain(errorFd, readable, options.error, errorBuffer);
}

void Exchange::feed(const fd_set& writable) {
    if (isReady(inputFd, writable) && !writeFromCallback(inputFd, inputBuffer.data(), inputBuffer.size(),
                                                         pendingBytes, options.input, options.context)) {
        closeStream(inputFd);
    }
}

void Exchange::drain(int& fd, const fd_set& readable, OutputCallback* callback,
                     std::vector<char>& buffer) const {
    if (isReady(fd, readable) &&
        !readToCallback(fd, callback, options.context, buffer.data(), buffer.size())) {
        closeStream(fd);
    }
}

void Exchange::closeAll() {
    closeStream(inputFd);
    closeStream(outputFd);
    closeStream(errorFd);
}

} // namespace brask
