#pragma once

// Small operations on files and directories.

#include "commons/errors/error.h"

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <istream>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

namespace brask {

BRASK_ERROR_TAG(CantCreateDirectory, "Cannot create the directory {}: {}")
BRASK_ERROR_TAG(CantStatFS, "Cannot stat filesystem containing {}: {}")

/// Removes the file, or the empty directory, at `path`, with the attempts and the pause of the settings
/// (retryFileOperation). An absent file is no failure. Raises what std::filesystem::remove raises.
void RemoveFile(const std::filesystem::path& path);

/// Makes the directory `path` and its missing parents, each with the owner, the group and the mode given, the
/// mode as reduced by the umask. What exists is left alone. Failures are not reported: look afterwards
/// whether the directory is there. Raises Error<&CantCreateDirectory, ExDefault> when memory runs out.
void make_dir(const std::string& path, uid_t uid, gid_t gid, mode_t mode);
void make_dir(const char* path, uid_t uid, gid_t gid, mode_t mode);

/// The bytes that are free for an ordinary user on the file system that holds `path`. Raises
/// Error<&CantStatFS, ExDefault>.
unsigned long long getFreeSpace(const std::string& path);

/// Writes all of `data` to the descriptor, however many calls it takes and whatever signals interrupt them.
/// False with errno set when a call fails; what was written by then stays.
bool writeAll(int fd, const char* data, size_t size);

/// Copies what can be read from the descriptor `from`, up to the end of file, to the descriptor `to`. Raises
/// std::system_error.
void copyData(int from, int to);

/// Whether `stream`, read from its start, begins with `expected`. The stream is left after what was read.
/// Raises std::system_error when it can't be positioned or read.
bool streamEquals(std::istream& stream, const std::string& expected);

/// stat(2), links followed. Raises std::system_error.
struct stat statFile(const std::string& path);

/// The time of the last modification, in seconds. Raises std::system_error.
std::time_t getModificationTime(const std::string& path);

} // namespace brask
