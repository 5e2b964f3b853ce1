#include "commons/panel/backup_settings.h"

#include "commons/log/log_facade.h"
#include "commons/panel/product_paths.h"
#include "commons/panel/settings_parser.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace brask {

namespace {

constexpr const char* kSection = "bmm";

} // namespace

const BackupSettings& BackupSettings::instance() {
    static const BackupSettings settings(joinPath(getProductRootDir(), "admin/conf/panel.ini"));
    return settings;
}

BackupSettings::BackupSettings(const std::string& path) {
    std::error_code unknown; // a file that can't be looked at counts as none
    if (!std::filesystem::exists(std::filesystem::status(path, unknown))) {
        return;
    }
    logNote("Load settings from {}", path);
    // A file that doesn't open is a failing stream, which the parser reports.
    std::ifstream file(path, std::ios::binary);
    read(file);
}

void BackupSettings::read(std::istream& file) {
    try {
        const SettingsMap settings = SettingsParser().parse(file);
        // Each value is stored at once: those before a bad one keep what the file says, although the message
        // below speaks of defaults alone.
#define BRASK_READ_SETTING(type, name, defaultValue)                                                         \
    values.name = getSetting<type>(settings, kSection, #name, defaultValue);
        BRASK_BACKUP_SETTINGS(BRASK_READ_SETTING)
#undef BRASK_READ_SETTING
    } catch (const std::exception& e) {
        logMessage(level::kWarning,
                   "Unable to read backup settings, default settings will be used instead. Details: {}",
                   e.what());
    } catch (...) {
        logMessage(level::kWarning, "Unable to read backup settings, default settings will be used instead");
    }
}

} // namespace brask
