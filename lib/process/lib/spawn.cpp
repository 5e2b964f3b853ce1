#include "lib/process/lib/spawn.h"

#include "commons/errors/system_error.h"
#include "lib/process/lib/exchange.h"
#include "lib/runtime/low_level_log.h"

#include <algorithm>
#include <cerrno>

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

/// Writing beyond the end of an fd_set is the end of the process at best.
void checkReachOfSelect(const Pipe& input, const Pipe& output, const Pipe& error) {
    if (std::max({input.writeEnd, output.readEnd, error.readEnd}) < FD_SETSIZE) {
        return;
    }
    for (const Pipe& pipe : {input, output, error}) {
        close(pipe.readEnd);
        close(pipe.writeEnd);
    }
    throwSystemError("forkExecvGetOutErr: descriptors too high for select()", EMFILE);
}

/// The child's exit code, or -1 when it didn't exit normally or can't be waited for.
int waitForExit(pid_t child) {
    int status = 0;
    pid_t waited = 0;
    // Trying again on ECHILD is meant. It spins for ever if somebody else has reaped the child.
    do {
        waited = waitpid(child, &status, 0);
    } while (waited == -1 && (errno == EINTR || errno == ECHILD));
    return waited == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct StringIoContext {
    const std::string* input;
    size_t inputOffset;
    std::string* output;
    std::string* error;
};

size_t takeInput(char* buffer, size_t capacity, void* context) {
    auto& io = *static_cast<StringIoContext*>(context);
    const size_t length = io.input->copy(buffer, capacity, io.inputOffset);
    io.inputOffset += length;
    return length;
}

void appendOutput(const char* data, size_t length, void* context) {
    static_cast<StringIoContext*>(context)->output->append(data, length);
}

void appendError(const char* data, size_t length, void* context) {
    static_cast<StringIoContext*>(context)->error->append(data, length);
}

/// An argument vector that points to `args`, with its null entry.
std::vector<char*> pointersTo(std::vector<std::string>& args) {
    std::vector<char*> argv(args.size() + 1);
    std::transform(args.begin(), args.end(), argv.begin(), [](std::string& arg) { return arg.data(); });
    return argv;
}

} // namespace

int runChild(const ChildOptions& options) {
    // The buffers come first: running out of memory for them later would leave a child behind.
    Exchange exchange(options);
    const Pipe input = makePipe();
    const Pipe output = makePipe();
    const Pipe error = makePipe();
    checkReachOfSelect(input, output, error);
    setNonBlocking(input.writeEnd);
    setNonBlocking(output.readEnd);
    setNonBlocking(error.readEnd);
    exchange.attach(input.writeEnd, output.readEnd, error.readEnd);

    const pid_t child = forkExecvPipes(input.readEnd, output.writeEnd, error.writeEnd, options.path,
                                       options.argv, options.user, options.chdirToHome, options.env);
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

int forkExecvGetOutErr(InputCallback* inputCallback, OutputCallback* outputCallback,
                       OutputCallback* errorCallback, const std::string& path, const std::vector<char*>& argv,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env, void* context, size_t inputBufferSize,
                       size_t outputBufferSize, size_t errorBufferSize) {
    return runChild({.path = path,
                     .argv = argv,
                     .user = user,
                     .chdirToHome = chdirToHome,
                     .env = env,
                     .input = inputCallback,
                     .output = outputCallback,
                     .error = errorCallback,
                     .context = context,
                     .inputBufferSize = inputBufferSize,
                     .outputBufferSize = outputBufferSize,
                     .errorBufferSize = errorBufferSize});
}

int forkExecvGetOutErr(const std::string& input, std::string& output, std::string& error,
                       const std::string& path, const std::vector<char*>& argv, const std::string& user,
                       bool chdirToHome, const std::map<std::string, std::string>& env) {
    StringIoContext context{&input, 0, &output, &error};
    return runChild({.path = path,
                     .argv = argv,
                     .user = user,
                     .chdirToHome = chdirToHome,
                     .env = env,
                     .input = takeInput,
                     .output = appendOutput,
                     .error = appendError,
                     .context = &context});
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv, const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env) {
    return forkExecvGetOutErr({}, output, error, path, argv, user, chdirToHome, env);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv, const std::string& user, bool chdirToHome) {
    return forkExecvGetOutErr(output, error, path, argv, user, chdirToHome, {});
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv) {
    return forkExecvGetOutErr(output, error, path, argv, {}, true);
}

int forkExecvGetOutErr(std::string& output, const std::string& path, const std::vector<char*>& argv) {
    std::string error;
    return forkExecvGetOutErr(output, error, path, argv);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env) {
    std::vector<std::string> copies(args);
    return forkExecvGetOutErr({}, output, error, args.at(0), pointersTo(copies), user, chdirToHome, env);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args) {
    return forkExecvGetOutErr(output, error, args, {}, false, {});
}

} // namespace brask
