#pragma once

#include <string>

namespace backup_restore_helper {

/// Carries out one call of the helper, which "--help" explains. The pairs lie below "var/" of `productRoot`,
/// the published key in its "admin/htdocs/".
///
/// Returns the exit status: 0, or 1 after one line on standard output (the only stream that the tool shows)
/// with the reason.
int runCommand(const std::string& productRoot, int argc, const char* const* argv);

} // namespace backup_restore_helper
