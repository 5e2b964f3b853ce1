#pragma once

// Running another utility:
//
//     ExecCmd helper(path);
//     helper.addArg("--set").addArg(name);
//     helper.stdinData = text;
//     if (helper.exec() != 0) { ... helper.stdoutData ... }    // or helper.run(), which raises ExFailed
//
// The hazards are those of spawn.h; SigpipeGuard is for a utility that may not read its input.

#include "commons/errors/exc.h"
#include "lib/process/lib/shell_escape.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace brask {

/// An argument vector.
class CmdLine {
public:
    CmdLine() : argv{nullptr} {}

    CmdLine(const CmdLine&) = delete;
    CmdLine& operator=(const CmdLine&) = delete;
    virtual ~CmdLine();

    /// Appends a copy of `argument` and returns this object, so that calls chain.
    virtual CmdLine& addArg(const std::string& argument);

    /// The command line for humans: the arguments escaped for a shell, an empty one as '', with blanks
    /// between.
    std::string toString() const;

    /// The arguments, copies from strdup that this object owns, and a null entry at the end.
    std::vector<char*> argv;
};

/// A command and, after it has run, what came of it. The fields are for the caller to read; `stdinData`,
/// `user` and `chdirToHome` are also for the caller to set before the run.
class ExecCmd : public CmdLine {
public:
    /// The tag of ExFailed.
    static const char* Failed(bool wantName);

    using ExFailed = Exc<&ExecCmd::Failed, ExDefault>;

    /// `path` also becomes argument 0. Without a slash it is searched for in PATH.
    explicit ExecCmd(const std::string& path);

    /// Sets a variable of the child's environment, on top of those it inherits.
    virtual void setEnv(const std::string& name, const std::string& value);

    /// execute(), and raises ExFailed if the status is not 0. What execute() raises passes through. The text
    /// of ExFailed holds all of `stdinData`: a caller that feeds secrets must use exec().
    virtual void run();

    /// execute() without exceptions. Returns `status`, which after an exception is that of the run before, or
    /// -1. The operation for callers that decide on the status themselves.
    virtual int exec();

    /// Runs the command, waits for its end, and returns `status`. May be called again: the outputs then grow,
    /// the rest is overwritten. Raises what forkExecvGetOutErr raises; `finished` and `status` then stay as
    /// they were.
    virtual int execute();

    /// Raises ExFailed with the command line, the status, and those of standard input, outputs and last error
    /// that are not empty.
    [[noreturn]] void reportError() const;

    /// A plain-text account of the last run.
    std::string describeResult() const;

    std::string path;
    std::string stdinData;                  ///< text for the child's standard input
    std::string user;                       ///< account to run the child as; empty: no switch
    bool chdirToHome = true;                ///< with `user`: begin in the account's home directory
    std::map<std::string, std::string> env; ///< see setEnv
    std::string stdoutData;
    std::string stderrData;
    bool started = false;  ///< a run has begun
    bool finished = false; ///< a run has stored its results
    /// What errno held after the run. For information: a good run most often leaves EAGAIN here. Only
    /// `status` tells success.
    std::int32_t errnoValue = 0;
    std::int32_t status = -1; ///< the exit code, or -1: not run, or ended by a signal
    std::string lastError;    ///< strerror(errnoValue), or empty
};

} // namespace brask
