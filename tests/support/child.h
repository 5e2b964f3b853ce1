#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace test_support {

/// How a child process ended and what it wrote.
struct ChildOutcome {
    int exitCode = -1; ///< -1 when a signal ended it
    int signal = 0;    ///< the signal that ended it, or 0
    std::string out;
    std::string err;
};

/// Runs `body` in a forked child, for what changes or ends the process. The child exits with 0 when `body`
/// returns and with 99 when it throws. Expectations belong in the parent: let the child print what it found.
template <class Body>
ChildOutcome inChild(Body body) {
    using File = std::unique_ptr<FILE, decltype([](FILE* f) { fclose(f); })>;
    const File out(tmpfile());
    const File err(tmpfile());
    fflush(nullptr);
    const pid_t pid = fork();
    if (!out || !err || pid < 0) {
        throw std::runtime_error("cannot start a child");
    }
    if (pid == 0) {
        dup2(fileno(out.get()), STDOUT_FILENO);
        dup2(fileno(err.get()), STDERR_FILENO);
        int code = 99;
        try {
            body();
            code = 0;
        } catch (const std::exception& e) {
            fputs(e.what(), stderr);
        }
        fflush(nullptr);
        _exit(code);
    }
    int status = 0;
    waitpid(pid, &status, 0);

    const auto content = [](FILE* file) {
        fseek(file, 0, SEEK_SET);
        std::string text;
        for (int c = fgetc(file); c != EOF; c = fgetc(file)) {
            text += static_cast<char>(c);
        }
        return text;
    };
    return {.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            .signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0,
            .out = content(out.get()),
            .err = content(err.get())};
}

} // namespace test_support
