#pragma once

// Removing temporary files and directories on every path out of a scope. A failure becomes a warning in the
// log and is swallowed.

#include <string>

namespace brask {

/// Removes the file at `path` as RemoveFile does, nothing for an empty `path`.
void removeFileLogged(const std::string& path);

/// Owns a temporary file. Clear `path` to keep the file; set `fd` to -1 after closing it.
struct TempFileGuard {
    explicit TempFileGuard(std::string path = {}, int fd = -1);
    TempFileGuard(const TempFileGuard&) = delete;
    TempFileGuard& operator=(const TempFileGuard&) = delete;
    /// Closes `fd` if it is not negative, then removes the file (removeFileLogged).
    ~TempFileGuard();

    std::string path;
    int fd;
};

/// Owns a temporary directory with everything in it. Clear `path` to keep the directory.
struct TempDirGuard {
    explicit TempDirGuard(std::string path = {});
    TempDirGuard(const TempDirGuard&) = delete;
    TempDirGuard& operator=(const TempDirGuard&) = delete;
    ~TempDirGuard();

    std::string path;
};

} // namespace brask
