#pragma once

#include "tests/support/temp_dir.h"

#include <map>
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
/// tells it, and all that it wrote to its two streams.
struct ProgramResult {
    int status;
    std::string out;
    std::string err;
};

using Environment = std::map<std::string, std::string>;

/// A running program, with its streams in memory.
class Program {
public:
    /// Starts `argv`, whose first element is the program's path, with `env` on top of this process's
    /// environment.
    explicit Program(const std::vector<std::string>& argv, const Environment& env = {},
                     const std::string& input = {})
        : in(memory("input")), out(memory("output")), err(memory("error")) {
        if (write(in, input.data(), input.size()) != static_cast<ssize_t>(input.size()) ||
            lseek(in, 0, SEEK_SET) != 0) {
            throw std::system_error(errno, std::generic_category(), "input of the program");
        }
        const std::vector<std::string> variables = environmentWith(env);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
        const int error = posix_spawn(&pid, argv.at(0).c_str(), &actions, nullptr, pointers(argv).data(),
                                      pointers(variables).data());
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
        close(err);
    }

    void kill() const { ::kill(pid, SIGKILL); }

    /// Waits for the end. To be called once.
    ProgramResult wait() {
        int status = 0;
        waitpid(std::exchange(pid, 0), &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                readFile("/proc/self/fd/" + std::to_string(out)),
                readFile("/proc/self/fd/" + std::to_string(err))};
    }

private:
    static int memory(const char* name) {
        const int fd = memfd_create(name, MFD_CLOEXEC);
        if (fd < 0) {
            throw std::system_error(errno, std::generic_category(), "memfd_create");
        }
        return fd;
    }

    /// As exec takes them; valid as long as `texts` is.
    static std::vector<char*> pointers(const std::vector<std::string>& texts) {
        std::vector<char*> result;
        result.reserve(texts.size() + 1);
        for (const std::string& text : texts) {
            result.push_back(const_cast<char*>(text.c_str()));
        }
        result.push_back(nullptr);
        return result;
    }

    static std::vector<std::string> environmentWith(const Environment& env) {
        std::vector<std::string> result;
        for (const auto& [name, value] : env) {
            result.push_back(name + "=" + value);
        }
        for (char** variable = environ; *variable != nullptr; ++variable) {
            const std::string text = *variable;
            if (!env.contains(text.substr(0, text.find('=')))) {
                result.push_back(text);
            }
        }
        return result;
    }

    const int in;
    const int out;
    const int err;
    pid_t pid = 0;
};

/// Runs a program to its end.
inline ProgramResult runProgram(const std::vector<std::string>& argv, const Environment& env = {},
                                const std::string& input = {}) {
    return Program(argv, env, input).wait();
}

} // namespace test_support
