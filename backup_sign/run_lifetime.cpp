#include "backup_sign/run_lifetime.h"

#include "commons/errors/error.h"
#include "commons/log/log_facade.h"
#include "commons/run/error_report.h"
#include "commons/run/locale_check.h"
#include "commons/xml/xml_globals.h"

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/exception.hpp>

#include <iostream>

using namespace brask;

namespace {

constexpr const char* kToolName = "backup_sign";

} // namespace

RunLifetime::SessionBracket::SessionBracket(int argc, char** argv, const RunOptions& options)
    : session(options.sessionPath), debugLog(options.verbose, options.debug),
      startStop(kToolName, argc, argv) {}

RunLifetime::RunLifetime(int argc, char** argv, const RunOptions& options) {
    // Before the first log line there can be.
    ErrorReportSender::installForLog();
    if (!options.sessionPath.empty()) {
        sessionBracket.emplace(argc, argv, options);
    }
    ErrorReportSender::instance().SetComponentName(kToolName);
    checkLocale();
    installExternalEntityLoader();
    profiling.emplace(profileLogPath());
    profiledCommand.emplace(argc, argv, std::map<ProfilingAttribute, std::string>{}, &*profiling, true);
}

void RunLifetime::SetExitCode(int exitCode) {
    if (sessionBracket) {
        sessionBracket->startStop.SetExitCode(exitCode);
    }
}

int runGuarded(RunLifetime& run, const std::function<void()>& command) {
    try {
        command();
        return 0;
    } catch (const ExTraceableBase<ExDefault>& e) {
        if (LogFacade* log = GetLogFacade()) {
            log->LogIfEnabled(level::kVerbose, true, e);
        }
        std::cout << e.GetText() << std::endl;
        return 1;
    } catch (const boost::exception& e) {
        // The run gets no exit code on this path: its stop line says that none was reported.
        logMessage(level::kVerbose, "{}", boost::diagnostic_information(e, true));
        throw;
    } catch (...) {
        run.SetExitCode(1);
        throw;
    }
}
