#pragma once

// The end of a program that can't go on.

namespace brask {

/// Reports a fatal condition: prints the message to standard error and to standard output, with the program's
/// name in front and, if errno is set, "\nSystem error <number>: <text>" after it. The message may have any
/// length. Then ends the process by exit(exitCode); a call with 0 returns, and is the only one that does.
void ErrorExit(int exitCode, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace brask
