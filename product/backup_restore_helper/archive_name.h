#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace backup_restore_helper {

using ArchiveTime = std::chrono::sys_time<std::chrono::microseconds>;

/// The name of the pair that was replaced at that moment: "pair.pem.20260131T235959.123456Z", in UTC, so that
/// the names sort by time.
std::string archiveName(ArchiveTime replaced);

/// Whether `name` is such a name, and thus no path and none of the store's other files.
bool isArchiveName(std::string_view name);

} // namespace backup_restore_helper
