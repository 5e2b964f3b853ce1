#pragma once

// The steps that the atomic saves of documents and of elements share. Both write a new file beside the
// target, hand it over and move it into the target's place. Nothing is synced to the disk, and the new file
// stays on any failure, as what an operator has left of the content.

#include <filesystem>
#include <string>

namespace brask {

/// Makes an empty file beside `target` and returns its path. A bare file name has no directory, and its file
/// is made in the directory of temporary files. Raises what BMM_getTempFileName raises.
std::string makeFileBeside(const std::filesystem::path& target, const std::string& prefix);

/// Hands `file` over to the panel's administrative account with its primary group. An unknown account reads
/// as root. Raises CantTakeFileOwnership.
void giveToPanel(const std::string& file);

} // namespace brask
