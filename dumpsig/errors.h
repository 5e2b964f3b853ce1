#pragma once

// Why a command ends with exit code 2. A failed system call is a brask::SystemError that names the file; what
// else goes wrong is one of these.

#include "commons/errors/error.h"

namespace dumpsig {

/// A mistake in the call.
BRASK_ERROR_TAG(UsageError, "{}")
/// Something about a file: its name, and what is wrong with it.
BRASK_ERROR_TAG(FileError, "{}: {}")

} // namespace dumpsig
