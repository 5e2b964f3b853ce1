#include "commons/log/call_no_throw.h"

#include "commons/log/log_facade.h"

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/exception.hpp>

namespace brask {

void callNoThrow(const std::function<void()>& fn, const std::string& message) {
    try {
        fn();
    } catch (const IExTraceable& e) {
        logMessage(level::kDebug, "{}: {}", message, e.GetText());
        if (LogFacade* log = GetLogFacade()) {
            log->Write(level::kDebug, true, e, nullptr);
        }
    } catch (const boost::exception& e) {
        logMessage(level::kDebug, "{}: {}", message, boost::diagnostic_information(e));
    } catch (const std::exception& e) {
        logMessage(level::kDebug, "{}: {}", message, e.what());
    } catch (...) {
        logMessage(level::kDebug, "{}", message);
    }
}

} // namespace brask
