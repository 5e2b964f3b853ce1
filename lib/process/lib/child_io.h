#pragma once

// Moving bytes between a child's pipes and the callbacks. Internal to spawn.

#include "lib/process/lib/spawn.h"

#include <cstddef>

namespace brask {

/// Reads from `fd`, which doesn't block, until it is drained for now, and hands the bytes to `callback`
/// (which may be null). True: come back when there is more; false: the stream has ended. Raises
/// SystemError("readToCallback failed"), and passes on what the callback throws.
bool readToCallback(int fd, OutputCallback* callback, void* context, char* buffer, size_t bufferSize);

/// Writes to `fd`, which doesn't block, until the pipe is full. `pendingBytes` is the count of bytes at the
/// start of `buffer` that are still to be written, 0 at first; `callback`, which must not be null, fills the
/// buffer when it is 0. True: come back when there is room; false: there is no more input, or nobody reads.
/// Raises SystemError("writeFromCallback failed"), and passes on what the callback throws.
bool writeFromCallback(int fd, char* buffer, size_t bufferSize, size_t& pendingBytes, InputCallback* callback,
                       void* context);

} // namespace brask
