#include "commons/log/call_no_throw.h"

#include "commons/log/log_facade.h"

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/exception.hpp>

namespace brask {

namespace {

constexpr int kDebugLevel = 4;

} // namespace

void callNoThrow(const std::function<void()>& fn, const std::string& message) {
    try {
        fn();
    } catch (const IExTraceable& e) {
        logMessage(kDebugLevel, "{}: {}", message, e.GetText());
        if (LogFacade* log = GetLogFacade()) {
            log->Write(kDebugLevel, true, e, nullptr);
        }
    } catch (const boost::exception& e) {
        logMessage(kDebugLevel, "{}: {}", message, boost::diagnostic_information(e));
    } catch (const std::exception& e) {
        logMessage(kDebugLevel, "{}: {}", message, e.what());
    } catch (...) {
        logMessage(kDebugLevel, "{}", message);
    }
}

} // namespace brask
