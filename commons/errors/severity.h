#pragma once

// How grave a failure is, and the words that documents write for it.

#include <string_view>

namespace brask {

/// The numbers that the exceptions and the structured log share.
namespace severity {
inline constexpr int kInfo = 20;
inline constexpr int kWarning = 30;
inline constexpr int kError = 40;
} // namespace severity

/// "info", "warning" or "error"; "error" too for a number that is none of the three.
const char* severityWord(int severity);

/// The number of one of the three words, `otherwise` for any other.
int severityOfWord(std::string_view word, int otherwise);

} // namespace brask
