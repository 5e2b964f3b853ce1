#pragma once

// How important a log line is, from 0, and how that relates to the severities of exceptions.

namespace brask {

/// The levels of the logs: 0 is graver than 4.
namespace level {
inline constexpr int kError = 0;
inline constexpr int kWarning = 1;
inline constexpr int kInfo = 2;
inline constexpr int kVerbose = 3;
inline constexpr int kDebug = 4;
} // namespace level

/// 0 gives 40, 1 gives 30, any other level 20.
int severityOfLevel(int level);

/// 40 gives 0, 30 gives 1, 20 gives 2, any other severity 3.
int levelOfSeverity(int severity);

} // namespace brask
