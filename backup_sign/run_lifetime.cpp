#include "backup_sign/run_lifetime.h"

#include "commons/run/error_report.h"
#include "commons/run/locale_check.h"
#include "commons/xml/xml_entity_loader.h"

namespace {

constexpr const char* kToolName = "backup_sign";

} // namespace

RunLifetime::SessionBracket::SessionBracket(int argc, char** argv, const RunOptions& options)
    : session(options.sessionPath), debugLog(options.verbose, options.debug),
      startStop(kToolName, argc, argv) {}

RunLifetime::RunLifetime(int argc, char** argv, const RunOptions& options) {
    // Before the first log line there can be.
    brask::ErrorReportSender::installForLog();
    if (!options.sessionPath.empty()) {
        sessionBracket.emplace(argc, argv, options);
    }
    brask::ErrorReportSender::instance().SetComponentName(kToolName);
    brask::checkLocale();
    brask::installExternalEntityLoader();
    profiling.emplace(brask::profileLogPath());
    profiledCommand.emplace(argc, argv, std::map<brask::ProfilingAttribute, std::string>{}, &*profiling,
                            true);
}

void RunLifetime::SetExitCode(int exitCode) {
    if (sessionBracket) {
        sessionBracket->startStop.SetExitCode(exitCode);
    }
}
