#pragma once

// Repeating an operation that may fail for a moment.

#include <functional>

namespace brask {

/// Calls `fn` until it returns, at most `attempts` times, and sleeps `pauseMs` milliseconds between two
/// calls. Whatever the last call throws passes through. With zero attempts `fn` is not called at all.
void retry(const std::function<void()>& fn, unsigned attempts, unsigned pauseMs);

/// The same with the attempts and the pause of the settings localMaxFieIoAttempts and
/// localPauseBetweenAttempts. A negative setting counts as zero.
void retryFileOperation(const std::function<void()>& fn);

} // namespace brask
