#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dumpsig {

enum class Command { kVerify, kInfo, kStrip, kCat, kFingerprint, kShowText };

/// A call that makes sense: whatever contradicts itself has been refused.
struct CommandLine {
    Command command = Command::kShowText;
    /// For kShowText: the help or the version, with a line end.
    std::string text;
    /// The files of the options -k, in order.
    std::vector<std::string> keys;
    /// The volumes, or for kFingerprint the key files. At least one; "-", standard input, only as the last
    /// volume.
    std::vector<std::string> files;
    bool json = false;
    bool quiet = false;
    bool inPlace = false;
    bool force = false;
    /// What --progress and --no-progress ask for; nothing means that the terminal decides.
    std::optional<bool> progress;
    std::optional<std::string> output;
};

/// The name of standard input and output on the command line.
inline constexpr const char* kStandardStream = "-";

/// Raises UsageError.
CommandLine parseCommandLine(int argc, const char* const* argv);

} // namespace dumpsig
