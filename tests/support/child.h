#pragma once

#include "tests/support/temp_dir.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test_support {

/// How a process ended, and all that it wrote to its two streams.
struct Outcome {
    int status; ///< its exit code, or 128 plus the number of the signal that killed it, as a shell tells it
    std::string out;
    std::string err;
};

/// A forked process, with its streams in memory.
class Child {
public:
    /// Runs `body` in it and exits with 0 when that returns, and with 99 when it throws. Expectations belong
    /// in the parent: let the child print what it found.
    explicit Child(const std::function<void()>& body, const std::string& input = {}) {
        requireSuccess(write(streams[0], input.data(), input.size()) == static_cast<ssize_t>(input.size()) &&
                           lseek(streams[0], 0, SEEK_SET) == 0,
                       "input of the child");
        fflush(nullptr);
        pid = fork();
        requireSuccess(pid != -1, "fork");
        if (pid == 0) {
            live(body);
        }
    }

    Child(const Child&) = delete;

    ~Child() {
        if (pid > 0) {
            kill(pid, SIGKILL);
            wait();
        }
        for (const int stream : streams) {
            close(stream);
        }
    }

    /// Waits for the end. To be called once.
    Outcome wait() {
        int status = 0;
        waitpid(std::exchange(pid, 0), &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                readFile("/proc/self/fd/" + std::to_string(streams[1])),
                readFile("/proc/self/fd/" + std::to_string(streams[2]))};
    }

private:
    [[noreturn]] void live(const std::function<void()>& body) const {
        int code = 0;
        for (int stream = 0; stream < 3; ++stream) {
            dup2(streams.at(stream), stream);
        }
        try {
            body();
        } catch (const std::exception& e) {
            fputs(e.what(), stderr);
            code = 99;
        }
        fflush(nullptr);
        _exit(code);
    }

    const std::array<int, 3> streams{memfd_create("input", MFD_CLOEXEC), memfd_create("output", MFD_CLOEXEC),
                                     memfd_create("error", MFD_CLOEXEC)};
    pid_t pid = 0;
};

inline Outcome inChild(const std::function<void()>& body) {
    return Child(body).wait();
}

using Environment = std::map<std::string, std::string>;

/// What a child does to become the program `argv`, whose first element is its path, with `env` on top of this
/// process's environment.
inline std::function<void()> program(const std::vector<std::string>& argv, const Environment& env = {}) {
    return [argv, env] {
        for (const auto& [name, value] : env) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        std::vector<char*> arguments(argv.size() + 1); // with a null pointer at the end
        std::transform(argv.begin(), argv.end(), arguments.begin(),
                       [](const std::string& argument) { return const_cast<char*>(argument.c_str()); });
        execv(arguments[0], arguments.data());
        requireSuccess(false, argv[0]);
    };
}

/// Runs a program to its end.
inline Outcome runProgram(const std::vector<std::string>& argv, const Environment& env = {},
                          const std::string& input = {}) {
    return Child(program(argv, env), input).wait();
}

} // namespace test_support
