#pragma once

// The log of the plain-function layer: a printf-style hook that writes to syslog or to the standard streams.
// It serves before any other log exists, and in a child between fork and exec: the syslog path uses no heap.
// Nothing here reports a failure; a log that can't be written loses its line. And the end of a program that
// can't go on.
//
// The state is global and unlocked. Call LogInit at start-up, before there is a second thread.

#include <cstdarg>

namespace brask {

/// The bit of LogInit's `options` that puts the trace id in front of each syslog line.
inline constexpr int kLogTraceId = 0x40;

/// The bit of a level that lets BRASK_LOG_LEVEL raise it.
inline constexpr int kLogLevelFromEnvironment = 8;

/// Writes one line. `priority` is syslog's: what is above the threshold is dropped. A null target makes these
/// the syslog pair, any other the stream pair. Before LogInit they are the stream pair, writing to both
/// streams, with threshold 0.
extern void (*logWrite)(int priority, const char* format, ...) __attribute__((format(printf, 2, 3)));
extern void (*logWriteV)(int priority, const char* format, va_list args)
    __attribute__((format(printf, 2, 0)));

/// Chooses where the lines go and sets the level as LogSetLevel does.
///
/// A null `target` is syslog: `facility` and `options` are openlog's, the process id is always logged, and
/// `ident` is cut to 63 bytes (null: the program's short name). With kLogTraceId among the options the id is
/// taken from BRASK_LOG_TRACE_ID, or made and put there, so that child processes share it.
///
/// Any other `target` is a stream's name, without regard to case: "console" is standard error and then
/// standard output, "stderr" is standard error, and any other name drops every line. The pointer is kept, so
/// the text must outlive the log; `facility`, `options` and `ident` are ignored.
void LogInit(const char* target, int level, int facility, int options, const char* ident);

/// Sets the threshold to the low three bits of `level`. With kLogLevelFromEnvironment in it, a
/// BRASK_LOG_LEVEL of one digit from 0 to 7 takes its place if that is greater.
void LogSetLevel(int level);

/// The options of the last LogInit for syslog, the process id's bit included.
int LogGetOptions();

/// Reports a fatal condition: prints the message to standard error and to standard output, with the program's
/// name in front and, if errno is set, "\nSystem error <number>: <text>" after it. The message may have any
/// length. Then ends the process by exit(exitCode); a call with 0 returns, and is the only one that does.
void ErrorExit(int exitCode, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace brask
