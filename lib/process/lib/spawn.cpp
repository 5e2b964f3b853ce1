#include "lib/process/lib/spawn.h"

#include "commons/errors/system_error.h"
#include "lib/process/lib/child_io.h"
#include "lib/runtime/low_level_log.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <exception>

#include <fcntl.h>
#include <sys/select.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brask {

namespace {

struct Pipe {
    int readEnd;
    int writeEnd;
};

/// A pipe, or the end of this process. Bare descriptors, because nothing here closes them when fork() fails.
Pipe makePipe() {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) {
        ErrorExit(1, "forkExecvGetOutErr: pipe() failed");
    }
    return {ends[0], ends[1]};
}

void setNonBlocking(int fd) {
    if (fcntl(fd, F_SETFL, O_NONBLOCK) == -1) {
        ErrorExit(1, "forkExecvGetOutErr: fcntl(O_NONBLOCK) failed");
    }
}

void closeStream(int& fd) {
    close(fd);
    fd = -1;
}

/// The caller's side of the talk with a child: the three streams, their callbacks and their buffers.
class Exchange {
public:
    Exchange(InputCallback* inputCallback, OutputCallback* outputCallback, OutputCallback* errorCallback,
             void* context, size_t inputBufferSize, size_t outputBufferSize, size_t errorBufferSize)
        : inputCallback(inputCallback), outputCallback(outputCallback), errorCallback(errorCallback),
          context(context), inputBuffer(inputBufferSize), outputBuffer(outputBufferSize),
          errorBuffer(errorBufferSize) {}

    /// Takes the parent-side descriptors over.
    void attach(int input, int output, int error) {
        inputFd = input;
        outputFd = output;
        errorFd = error;
        selectWidth = std::max({input, output, error}) + 1;
    }

    /// Moves bytes until all streams are closed, or until something fails: the child then gets SIGTERM, and
    /// the failure is returned.
    std::exception_ptr run(pid_t child) {
        while ((inputFd & outputFd & errorFd) != -1) {
            try {
                round();
            } catch (...) {
                kill(child, SIGTERM);
                std::exception_ptr failure = std::current_exception();
                closeStream(inputFd);
                closeStream(outputFd);
                closeStream(errorFd);
                return failure;
            }
        }
        return nullptr;
    }

private:
    void round() {
        fd_set readable;
        fd_set writable;
        FD_ZERO(&readable);
        FD_ZERO(&writable);
        watch(inputFd, writable);
        watch(outputFd, readable);
        watch(errorFd, readable);
        // After EINTR the sets are as they were passed in. Taking all streams for ready does no harm, as none
        // of them blocks.
        if (select(selectWidth, &readable, &writable, nullptr, nullptr) == -1 && errno != EINTR) {
            throwSystemError("forkExecvGetOutErr: select() failed", errno);
        }
        if (isReady(inputFd, writable) && !writeFromCallback(inputFd, inputBuffer.data(), inputBuffer.size(),
                                                             pendingBytes, inputCallback, context)) {
            closeStream(inputFd);
        }
        drain(outputFd, readable, outputCallback, outputBuffer);
        drain(errorFd, readable, errorCallback, errorBuffer);
    }

    void drain(int& fd, const fd_set& readable, OutputCallback* callback, std::vector<char>& buffer) const {
        if (isReady(fd, readable) && !readToCallback(fd, callback, context, buffer.data(), buffer.size())) {
            closeStream(fd);
        }
    }

    static void watch(int fd, fd_set& set) {
        if (fd != -1) {
            FD_SET(fd, &set);
        }
    }

    static bool isReady(int fd, const fd_set& set) { return fd > 0 && FD_ISSET(fd, &set); }

    InputCallback* inputCallback;
    OutputCallback* outputCallback;
    OutputCallback* errorCallback;
    void* context;
    std::vector<char> inputBuffer;
    std::vector<char> outputBuffer;
    std::vector<char> errorBuffer;
    size_t pendingBytes = 0;
    int inputFd = -1;
    int outputFd = -1;
    int errorFd = -1;
    int selectWidth = 0;
};

/// The child's exit code, or -1 when it didn't exit normally or can't be waited for.
int waitForExit(pid_t child) {
    int status = 0;
    pid_t waited = 0;
    // Trying again on ECHILD is meant. It spins for ever if somebody else has reaped the child.
    do {
        waited = waitpid(child, &status, 0);
    } while (waited == -1 && (errno == EINTR || errno == ECHILD));
    return waited > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

int forkExecvGetOutErr(InputCallback* inputCallback, OutputCallback* outputCallback,
                       OutputCallback* errorCallback, const std::string& path, const std::vector<char*>& argv,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env, void* context, size_t inputBufferSize,
                       size_t outputBufferSize, size_t errorBufferSize) {
    // The buffers come first: running out of memory for them later would leave a child behind.
    Exchange exchange(inputCallback, outputCallback, errorCallback, context, inputBufferSize,
                      outputBufferSize, errorBufferSize);
    const Pipe input = makePipe();
    const Pipe output = makePipe();
    const Pipe error = makePipe();
    setNonBlocking(input.writeEnd);
    setNonBlocking(output.readEnd);
    setNonBlocking(error.readEnd);
    exchange.attach(input.writeEnd, output.readEnd, error.readEnd);

    const pid_t child =
        forkExecvPipes(input.readEnd, output.writeEnd, error.writeEnd, path, argv, user, chdirToHome, env);
    close(input.readEnd);
    close(output.writeEnd);
    close(error.writeEnd);

    const std::exception_ptr failure = exchange.run(child);
    const int result = waitForExit(child);
    if (failure) {
        std::rethrow_exception(failure);
    }
    return result;
}

} // namespace brask
