#pragma once

// The lines that frame a run in the debug log: "NAME started : COMMAND LINE" and "NAME finished. ...".

#include <functional>
#include <string>
#include <vector>

namespace brask {

class StartStopLogger {
public:
    /// Logs the start with the whole command line in a form that can be pasted into a shell, and adds a hook
    /// to daemonHooks(). `name` is the utility's.
    StartStopLogger(const std::string& name, int argc, char** argv);
    StartStopLogger(const StartStopLogger&) = delete;
    StartStopLogger& operator=(const StartStopLogger&) = delete;

    /// Logs the end with the exit code. A log that fails here ends the process.
    ~StartStopLogger();

    /// The exit code to report. -1 means that none is reported.
    void SetExitCode(int code) { exitCode = code; }

private:
    /// Logs the change of the process id; for the new process.
    void OnDaemonized();

    std::string name;
    int pid;
    int exitCode = -1;
};

/// What a process that has turned into a daemon is to run once after its fork. The hooks of StartStopLogger
/// are not removed: whoever runs them must do so before the logger dies.
std::vector<std::function<void()>>& daemonHooks();

} // namespace brask
