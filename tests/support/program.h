#pragma once

#include "tests/support/temp_dir.h"

#include <string>
#include <utility>
#include <vector>

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test_support {

/// How a program ended: its exit code, or 128 plus the number of the signal that killed it, as a shell
/// tells it, and all that it wrote to standard output.
struct ProgramResult {
    int status;
    std::string out;
};

/// A running program, with its streams in memory: it reads `input`, and its standard error is the test's own.
class Program {
public:
    /// Starts `argv`, whose first element is the program's path.
    explicit Program(const std::vector<std::string>& argv, const std::string& input = {})
        : in(memory("input")), out(memory("output")) {
        if (write(in, input.data(), input.size()) != static_cast<ssize_t>(input.size()) ||
            lseek(in, 0, SEEK_SET) != 0) {
            throw std::system_error(errno, std::generic_category(), "input of the program");
        }
        std::vector<char*> arguments;
        arguments.reserve(argv.size() + 1);
        for (const std::string& argument : argv) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
        const int error = posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (error != 0) {
            throw std::system_error(error, std::generic_category(), argv[0]);
        }
    }

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    ~Program() {
        if (pid > 0) {
            kill();
            wait();
        }
        close(in);
        close(out);
    }

    void kill() const { ::kill(pid, SIGKILL); }

    /// Waits for the end. To be called once.
    ProgramResult wait() {
        int status = 0;
        waitpid(std::exchange(pid, 0), &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                readFile("/proc/self/fd/" + std::to_string(out))};
    }

private:
    static int memory(const char* name) {
        const int fd = memfd_create(name, MFD_CLOEXEC);
        if (fd < 0) {
            throw std::system_error(errno, std::generic_category(), "memfd_create");
        }
        return fd;
    }

    const int in;
    const int out;
    pid_t pid = 0;
};

/// Runs a program to its end.
inline ProgramResult runProgram(const std::vector<std::string>& argv, const std::string& input = {}) {
    return Program(argv, input).wait();
}

} // namespace test_support
