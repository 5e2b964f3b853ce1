#pragma once

#include <string>

namespace backup_restore_helper {

/// Carries out one call of the helper, which takes exactly one argument:
///
///     --get-backup-certificate    prints the stored key pair and nothing else
///     --set-backup-certificate    stores the key pair that it reads from standard input
///
/// The pair lies below "var/" of `productRoot`. Returns the exit status: 0, or 1 after one line on standard
/// output (the only stream that callers show) with the reason.
int runCommand(const std::string& productRoot, int argc, const char* const* argv);

} // namespace backup_restore_helper
