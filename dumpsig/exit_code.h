#pragma once

// How a command ends: the exit code, and the failures that are kUnknown. A failed system call is a
// brask::SystemError that names the file; what else goes wrong is one of these.

#include "commons/errors/error.h"

namespace dumpsig {

/// What a script sees.
enum ExitCode : int {
    kIntact = 0,    ///< the answer is yes, or the work is done
    kNotIntact = 1, ///< the answer is no: not intact, not signed, unreadable document
    kUnknown = 2,   ///< no answer: a mistake in the call, or something could not be read or written
};

/// A mistake in the call.
BRASK_ERROR_TAG(UsageError, "{}")
/// Something about a file: its name, and what is wrong with it.
BRASK_ERROR_TAG(FileError, "{}: {}")

} // namespace dumpsig
