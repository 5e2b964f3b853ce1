#pragma once

// The caller's side of the talk with a child. Internal to spawn.

#include "lib/process/lib/child_options.h"

#include <exception>
#include <vector>

#include <sys/select.h>
#include <sys/types.h>

namespace brask {

/// Moves bytes between the callbacks and the three pipes of one child, through a buffer for each.
class Exchange {
public:
    /// Allocates the buffers. `options` must outlive this object.
    explicit Exchange(const ChildOptions& options);

    /// Takes the parent-side descriptors over, which must not block and be below FD_SETSIZE.
    void attach(int input, int output, int error);

    /// Moves bytes until all streams are closed, or until something fails: the child then gets SIGTERM, and
    /// the failure is returned.
    std::exception_ptr run(pid_t child);

private:
    void round();
    void feed(const fd_set& writable);
    void drain(int& fd, const fd_set& readable, OutputCallback* callback, std::vector<char>& buffer) const;
    void closeAll();

    const ChildOptions& options;
    std::vector<char> inputBuffer;
    std::vector<char> outputBuffer;
    std::vector<char> errorBuffer;
    size_t pendingBytes = 0;
    int inputFd = -1;
    int outputFd = -1;
    int errorFd = -1;
    int selectWidth = 0;
};

} // namespace brask
