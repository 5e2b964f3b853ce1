#include "commons/run/debug_log.h"

#include "commons/errors/error.h"
#include "commons/errors/text_formatters.h"
#include "commons/panel/product_paths.h"
#include "commons/run/session_files.h"
#include "commons/run/session_log_file.h"
#include "log4cpp_additions/configure.h"

#include <log4cpp/Category.hh>

#include <cstdlib>
#include <string>

namespace brask {

namespace {

log4cpp::Category* const category = &log4cpp::Category::getInstance("p.log");
bool log4cppConfigured = false;

void write(log4cpp::Priority::Value priority, const std::string& text) {
    category->log(priority, text);
}

/// By reference: the appender stays log4cpp's own.
void attachCustomLog() {
    if (log4cpp::Appender* customLog = log4cpp::Appender::getAppender("CUSTOMLOG")) {
        log4cpp::Category::getRoot().addAppender(*customLog);
    }
}

void configureLog4cpp(bool debug) {
    requireThat(session != nullptr, "session != NULL");
    const char* customLog = getenv("CUSTOM_LOG");
    const std::string logFileName = session->getLogFile();
    SessionLogFile logFile(logFileName);
    const bool isUsed = log4cpp_additions::configure(
        getBmmConfigFile(),
        {{"LOG_FILE_NAME", logFileName}, {"CUSTOM_LOG_FILE_NAME", customLog == nullptr ? "" : customLog}},
        {.fileName = logFileName, .descriptor = logFile.descriptor()});
    if (isUsed) {
        logFile.keep();
    }
    if (!debug) {
        log4cpp::Category& root = log4cpp::Category::getRoot();
        root.removeAppender(root.getAppender("A2"));
    }
    if (customLog != nullptr) {
        attachCustomLog();
    }
}

} // namespace

Log4cppDebugLog::~Log4cppDebugLog() {
    log4cpp::Category::shutdown();
}

void Log4cppDebugLog::Info(const std::string& message) {
    write(log4cpp::Priority::INFO, message);
}

void Log4cppDebugLog::Error(const std::string& message) {
    write(log4cpp::Priority::ERROR, message);
}

void Log4cppDebugLog::Info(const IExTraceable& ex) {
    Info(GetErrorText(ex));
}

DebugLogLifetimeController::DebugLogLifetimeController(bool verbose, bool debug) {
    if (!log4cppConfigured) {
        configureLog4cpp(debug);
        log4cppConfigured = true;
    }
    currentDebugLog = new Log4cppDebugLog(verbose && !debug, debug);
    AttachLogFacade();
    GetLogFacade()->SetLevel(debug ? 4 : 3);
}

DebugLogLifetimeController::~DebugLogLifetimeController() {
    delete currentDebugLog;
    currentDebugLog = nullptr;
    DetachLogFacade();
}

} // namespace brask
