#pragma once

// Starting a child process over three pipes, feeding its standard input, collecting its output, and waiting
// for it.
//
//     std::string output;
//     std::string error;
//     const int status = forkExecvGetOutErr(output, error, {"/bin/ls", "-l", "/"});
//     // status: the exit code, or -1 when a signal ended the child
//
// All forms of forkExecvGetOutErr come to runChild, which takes everything that can be chosen about a child.
//
// Before the call
//
//   SIGCHLD must not be ignored, nor must anybody else reap the child. The wait for it is tried again when
//   there is nothing to wait for, so it then spins for ever.
//
//   SIGPIPE keeps its disposition. A child that closes its standard input before it has read everything kills
//   the caller, unless a SigpipeGuard (this_process.h) lives round the call.
//
//   Flush stdio. What the caller has written and not flushed is in the child's memory too, and goes to the
//   pipes as well if the program can't be executed.
//
//   Descriptors must be below FD_SETSIZE (1024), as select() watches them. With so many open that a pipe gets
//   a number above that, SystemError is raised before there is a child.
//
//   One thread. The child allocates memory between fork and exec, so a lock that another thread holds at that
//   moment stays locked in it for ever.
//
// During the run
//
//   Deadlock there is none: input and both outputs move in one loop, so neither side waits for the other
//   however much either writes. Whoever calls forkExecvPipes has to see to that.
//
//   There is no timeout. A child that neither exits nor closes its output holds the caller for ever, and so
//   does a background process that it leaves behind with a pipe open: the end of both outputs ends the loop,
//   not the child's exit.
//
//   Memory. The string forms collect what the child writes without a bound.
//
// When it fails
//
//   Where pipe() or fcntl() fails the whole process ends through ErrorExit, with exit code 1. Where fork()
//   fails the three pipes stay open.
//
//   A program that can't be executed is exit code 1, with the reason on both outputs. The child ends by
//   exit(1) then, so atexit handlers and static destructors run in it.
//
//   An exception in the child (dup2Custom failed, setenv() failed) is not caught there. It unwinds the
//   caller's stack inside the child, which goes on as a second copy of the caller, while the caller sees
//   nothing but the end of the output.
//
//   errno says nothing: after a good run it is most often EAGAIN, left by the last read.

#include "lib/process/lib/child_options.h"
#include "lib/process/lib/fork_exec.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace brask {

/// Runs a child to its end. Returns its exit code, or -1 when it didn't exit normally. When a callback
/// throws, or select, read or write fail (SystemError), the child gets SIGTERM and is waited for before the
/// exception goes on. Raises SystemError also when there are too many descriptors or fork() fails.
int runChild(const ChildOptions& options);

/// Over callbacks.
int forkExecvGetOutErr(InputCallback* inputCallback, OutputCallback* outputCallback,
                       OutputCallback* errorCallback, const std::string& path, const std::vector<char*>& argv,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env, void* context, size_t inputBufferSize,
                       size_t outputBufferSize, size_t errorBufferSize);

/// Over strings: `input` is fed to the child, its outputs are appended to `output` and `error`.
int forkExecvGetOutErr(const std::string& input, std::string& output, std::string& error,
                       const std::string& path, const std::vector<char*>& argv, const std::string& user,
                       bool chdirToHome, const std::map<std::string, std::string>& env);

/// Without input.
int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv, const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env);

/// And with the caller's environment as it is.
int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv, const std::string& user, bool chdirToHome);

/// And as the caller's user.
int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv);

/// And with standard error dropped.
int forkExecvGetOutErr(std::string& output, const std::string& path, const std::vector<char*>& argv);

/// Without input, the program being the first of `args`. Raises std::out_of_range when `args` is empty.
int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env);

/// And as the caller's user with the caller's environment. Unlike the forms with `argv`, this one does not
/// ask for the home directory.
int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args);

} // namespace brask
