#pragma once

#include "backup_sign/run_lifetime.h"

#include <functional>

/// Runs `command` inside the bracket of `run` and returns the exit code for it: 0 or, for a failure of the
/// brask::ExTraceableBase<ExDefault> kind, 1 with the failure logged and its text on standard output. Any
/// other exception passes; the bracket knows of it then, but for the exit code of a boost::exception.
int runGuarded(RunLifetime& run, const std::function<void()>& command);
