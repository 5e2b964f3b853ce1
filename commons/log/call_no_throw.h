#pragma once

// Running a step whose failure must not stop the caller.

#include <functional>
#include <string>

namespace brask {

/// Calls `fn`. Whatever it throws, an ExFatal error too, is swallowed and written to the log at level 4 with
/// `message` in front; an error of the IExTraceable family is then written once more with all its facts. An
/// empty `fn` counts as one that throws. What a sink of the log throws passes through.
void callNoThrow(const std::function<void()>& fn, const std::string& message);

} // namespace brask
