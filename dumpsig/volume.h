#pragma once

#include "dumpsig/input_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace dumpsig {

/// A volume before it is read.
struct Volume {
    std::string path;
    /// Bytes to read, if it is a regular file.
    std::optional<std::uint64_t> size;
    bool isStandardInput = false;
};

using Volumes = std::vector<Volume>;

/// Looks at each volume before the first is read, so that a mistake in the last of many shows at once. Files
/// are opened for it; a pipe is not, since that would wait for its writer and lose it. Raises SystemError for
/// what is missing, unreadable or a directory.
Volumes examineVolumes(const std::vector<std::string>& paths);

/// The bytes of all volumes, if all are regular files.
std::optional<std::uint64_t> totalSize(const Volumes& volumes);

/// The end of the last volume as far as a signature may reach, if it can be seen without reading all of it.
std::optional<Tail> peekAtTail(const Volumes& volumes);

/// Raises FileError when the file to which content is going to be written is one of the volumes, which would
/// be destroyed, or read without end.
void refuseVolumeAsOutput(const Volumes& volumes, const struct stat& output);

/// The same for standard output.
void refuseVolumeAsStandardOutput(const Volumes& volumes);

} // namespace dumpsig
