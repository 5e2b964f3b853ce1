#include "backup_sign/command_guard.h"

#include "commons/errors/error.h"
#include "commons/log/log_facade.h"

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/exception.hpp>

#include <iostream>

using namespace brask;

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
