#pragma once

// Moving bytes between a child's pipes and the callbacks. Internal to spawn.

#include "lib/process/lib/child_options.h"

#include <cstddef>

namespace brask {

/// Drains the non-blocking `fd` and hands the bytes to `callback`, which may be null. True: come back when
/// there is more; false: the stream has ended.
/// Raises SystemError("readToCallback failed"), and passes on what the callback throws.
bool readToCallback(int fd, OutputCallback* callback, void* context, char* buffer, size_t bufferSize);

/// Writes to the non-blocking `fd` until the pipe is full. The first `pendingBytes` of `buffer` are still to
/// be written, 0 at first; whenever there are none, `callback`, which must not be null, is asked for more.
/// True: come back when there is room; false: there is no more input, or nobody reads.
/// Raises SystemError("writeFromCallback failed"), and passes on what the callback throws.
bool writeFromCallback(int fd, char* buffer, size_t bufferSize, size_t& pendingBytes, InputCallback* callback,
                       void* context);

} // namespace brask
