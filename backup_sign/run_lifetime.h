#pragma once

// The bracket round the dispatch of a command: session, debug log, start and stop lines, the set-up that
// every command needs, and profiling. And the guard, which turns what a command raises into an exit code.

#include "commons/run/debug_log.h"
#include "commons/run/profiling.h"
#include "commons/run/session_files.h"
#include "commons/run/start_stop_logger.h"

#include <functional>
#include <optional>
#include <string>

struct RunOptions {
    /// The session directory; without one there is no session and no log.
    std::string sessionPath;
    bool verbose = false;
    bool debug = false;
};

/// Opened before the dispatch and closed, whatever happens, in the reverse order: the members are the stack,
/// and the session goes last.
class RunLifetime {
public:
    /// Raises what the opening of the session or of the debug log raises; what was opened by then is closed
    /// again.
    RunLifetime(int argc, char** argv, const RunOptions& options);

    RunLifetime(const RunLifetime&) = delete;
    RunLifetime& operator=(const RunLifetime&) = delete;

    /// The exit code for the stop line. Without a call the line says that it is not reported.
    void SetExitCode(int exitCode);

private:
    /// What only a run under a session has.
    struct SessionBracket {
        SessionBracket(int argc, char** argv, const RunOptions& options);

        brask::SessionLifetimeController session;
        brask::DebugLogLifetimeController debugLog;
        brask::StartStopLogger startStop;
    };

    std::optional<SessionBracket> sessionBracket;
    std::optional<brask::ProfilingContext> profiling;
    std::optional<brask::ProfilingCommand> profiledCommand;
};

/// Runs `command` inside the bracket of `run` and returns the exit code for it: 0 or, for a failure of the
/// brask::ExTraceableBase<ExDefault> kind, 1 with the failure logged and its text on standard output. Any
/// other exception passes; the bracket knows of it then, but for the exit code of a boost::exception.
int runGuarded(RunLifetime& run, const std::function<void()>& command);
