#include "product/backup_restore_helper/archive_name.h"

#include <cstdio>
#include <ctime>

namespace backup_restore_helper {

namespace {

constexpr std::string_view archivePrefix = "pair.pem.";

} // namespace

std::string archiveName(ArchiveTime replaced) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(replaced);
    const time_t second = seconds.time_since_epoch().count();
    char text[64];
    tm fields{};
    size_t length = strftime(text, sizeof text, "%Y%m%dT%H%M%S", gmtime_r(&second, &fields));
    length += static_cast<size_t>(std::snprintf(text + length, sizeof text - length, ".%06dZ",
                                                static_cast<int>((replaced - seconds).count())));
    return std::string(archivePrefix).append(text, length);
}

bool isArchiveName(std::string_view name) {
    return name.starts_with(archivePrefix) && name.size() > archivePrefix.size() &&
           name.find_first_not_of("0123456789TZ.", archivePrefix.size()) == std::string_view::npos;
}

} // namespace backup_restore_helper
