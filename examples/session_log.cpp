// Keeps the log of a run in a session directory, and reads settings: the frame of every tool of the panel.
//
//     session_log SESSION-DIRECTORY [SETTINGS-FILE]
//
// The lines go to "migration.log" in the session directory, as the product tree's log4cpp.properties says.

#include "commons/backup_settings.h"
#include "commons/debug_log.h"
#include "commons/param_source.h"
#include "commons/session.h"
#include "commons/settings_parser.h"
#include "commons/start_stop_logger.h"

#include <cstdio>
#include <exception>
#include <fstream>

namespace {

// A program on the library says once, before main, where the library's parameters come from.
brask::ParamFromBSAStrategy parameters;
[[maybe_unused]] const bool parametersInstalled = (brask::paramSource = &parameters, true);

void work(const char* settingsFile) {
    // The settings of all backup tools, from the product tree's panel.ini, each with its default.
    brask::logMessage(brask::level::kInfo, "A file operation is tried {} times",
                      brask::BackupSettings::localMaxFieIoAttempts());
    // The same syntax for a file of this tool's own.
    if (settingsFile != nullptr) {
        std::ifstream file(settingsFile);
        const brask::SettingsMap settings = brask::SettingsParser().parse(file);
        brask::logMessage(brask::level::kInfo, "{} parallel transfers",
                          brask::getSetting<int>(settings, "transfer", "parallel", 4));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::printf("Usage: %s SESSION-DIRECTORY [SETTINGS-FILE]\n", argv[0]);
        return 1;
    }
    try {
        // In this order: the log is in the session, and the start and stop lines are in the log.
        const brask::SessionLifetimeController session(argv[1]);
        const brask::DebugLogLifetimeController log(/*verbose=*/false, /*debug=*/false);
        brask::StartStopLogger startStop("session_log", argc, argv);
        work(argv[2]);
        startStop.SetExitCode(0);
        std::printf("%s\n", brask::session->getLogFile().c_str());
        return 0;
    } catch (const std::exception& e) {
        std::printf("%s\n", e.what());
        return 1;
    }
}
