#pragma once

// Moving files and copying directories, across file systems too.

#include "commons/errors/error.h"

#include <filesystem>

namespace brask {

/// Moves `from` to `to`. Within a file system an existing target is replaced atomically. Across file systems
/// `from` is copied and then removed: that is not atomic, an existing file as target is a failure, and an
/// existing directory is merged into. Raises Error<&CantRenameFile, ExDefault> on any failure.
///
/// Call it with its namespace: with std::filesystem paths as arguments, the plain name is ambiguous.
void rename(const std::filesystem::path& from, const std::filesystem::path& to);

/// Copies the directory `from` with everything below it into `to`, which is made with the attributes of
/// `from` if absent, and must not lie inside `from`. Symbolic links are copied as links. What is neither
/// link, directory nor regular file is left out. With `overwrite` files and links that exist at the target
/// are replaced, without it they are a failure. Raises what std::filesystem raises; what was copied until
/// then stays.
void copyDirectory(const std::filesystem::path& from, const std::filesystem::path& to, bool overwrite);

/// The same with a call of its own for each directory inside, which keeps one level of directories open per
/// call.
void copyDirectoryRecursively(const std::filesystem::path& from, const std::filesystem::path& to,
                              bool overwrite);

} // namespace brask
