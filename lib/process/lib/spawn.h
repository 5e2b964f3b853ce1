#pragma once

// Starting a child process over three pipes, feeding its standard input, collecting its output, and waiting
// for it.
//
//     std::string output;
//     std::string error;
//     const int status = forkExecvGetOutErr(output, error, {"/bin/ls", "-l", "/"});
//     // status: the exit code, or -1 when a signal ended the child
//
// Arguments: `path` is searched for in PATH when it has no slash. `argv` ends with a null entry and stays the
// caller's. An empty `user` is no switch of identity; neither is root nor an unknown account: the child then
// runs as the caller. `chdirToHome` counts only where there is a switch. The variables of `env` win over
// inherited ones of the same name. -1 as a descriptor stands for /dev/null.
//
// What to know before using it:
//
// Deadlock. The forkExecvGetOutErr family moves input and both outputs in one loop, so neither side waits for
// the other however much either writes. Whoever calls forkExecvPipes has to see to that.
//
// No timeout. A child that neither exits nor closes its output holds the caller for ever.
//
// Grandchildren. The loop ends at the end of both outputs, not at the child's exit. A background process that
// the child leaves behind with a pipe open holds the caller until it ends.
//
// SIGPIPE keeps its disposition. A child that closes its standard input before it has read everything kills
// the caller, unless a SigpipeGuard (sigpipe_guard.h) lives round the call.
//
// Limits. The string forms collect without a bound. As select() is used, descriptors must stay below
// FD_SETSIZE. Where pipe() or fcntl() fails the whole process ends through ErrorExit; where fork() fails the
// three pipes stay open.
//
// The forked child. Until it has executed the program it is a copy of the caller, less the descriptors above
// 2. A program that can't be executed ends it by exit(1), with the reason on both of its outputs: atexit
// handlers and static destructors run there too, and stdio text that the caller had not flushed goes to the
// pipes, so flush before the call. An exception raised there is not caught there. It unwinds the caller's
// stack inside the child, which goes on as a second copy of the caller, while the caller sees nothing but the
// end of the output.
//
// errno. After a good run it is most often EAGAIN, left by the last read.

#include "lib/process/lib/closefrom.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace brask {

/// Fills `buffer` with up to `capacity` bytes for the child's standard input. 0: there is no more.
using InputCallback = size_t(char* buffer, size_t capacity, void* context);

/// Takes bytes that the child has written.
using OutputCallback = void(const char* data, size_t length, void* context);

/// Starts the child on the given descriptors and returns its process id, without waiting.
/// Raises SystemError("forkExecvPipes: fork() failed"); raises in the child as told above.
pid_t forkExecvPipes(int stdinFd, int stdoutFd, int stderrFd, const std::string& path,
                     const std::vector<char*>& argv, const std::string& user, bool chdirToHome,
                     const std::map<std::string, std::string>& env);

/// Runs a child over callbacks, with a buffer of the given size for each stream. `inputCallback` must not be
/// null; the others may be, and what they would take is then dropped. Returns the exit code, or -1 when the
/// child didn't exit normally. When a callback throws, or select, read or write fail (SystemError), the child
/// gets SIGTERM and is waited for before the exception goes on.
int forkExecvGetOutErr(InputCallback* inputCallback, OutputCallback* outputCallback,
                       OutputCallback* errorCallback, const std::string& path, const std::vector<char*>& argv,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env, void* context, size_t inputBufferSize,
                       size_t outputBufferSize, size_t errorBufferSize);

/// The same over strings: `input` is fed to the child, its outputs are appended to `output` and `error`.
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

/// And as the caller's user with the caller's environment.
int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args);

/// Makes `newFd` a copy of `oldFd`, or of /dev/null opened for reading and writing if that is -1, and closes
/// `oldFd`; does nothing if the two are equal. Returns what dup2 returns, its failure included. With -1,
/// `newFd` must be open: /dev/null may come to lie on a closed one at once, and is then closed again.
/// Raises SystemError("dup2Custom failed") when /dev/null can't be opened.
int dup2Custom(int oldFd, int newFd);

} // namespace brask
