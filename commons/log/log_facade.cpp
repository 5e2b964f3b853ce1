#include "commons/log/log_facade.h"

#include "commons/errors/severity.h"
#include "commons/errors/text_formatters.h"

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/exception.hpp>

#include <memory>

namespace brask {

namespace {

// The least important level that the structured log gets.
constexpr int kLastStructuredLevel = level::kInfo;
// The least important level that is worth an error report.
constexpr int kLastReportedLevel = level::kWarning;

std::unique_ptr<LogFacade> instance;
int attachedSinks = 0;
ReportHook reportHook = nullptr;

} // namespace

DebugLog* currentDebugLog = nullptr;
Log* currentLog = nullptr;

void LogFacade::Write(int level, bool report, const std::string& message, const ObjectList* objects) {
    if (feedsXmlLog(level)) {
        // To the structured log a plain text is an exception without a name.
        AddToXmlLog(level, ExTraceableBase<ExDefault>("", message), objects);
    }
    WriteText(level, report, message, objects);
}

void LogFacade::Write(int level, bool report, const IExTraceable& ex, const ObjectList* objects) {
    if (feedsXmlLog(level)) {
        AddToXmlLog(level, ex, objects);
    }
    WriteText(level, report, GetErrorText(ex), objects);
}

bool LogFacade::feedsXmlLog(int level) const {
    return xmlLog != nullptr && level <= kLastStructuredLevel;
}

void LogFacade::AddToXmlLog(int level, const IExTraceable& ex, const ObjectList* objects) {
    if (objects != nullptr) {
        xmlLog->AddMessage(severityOfLevel(level), ex, *objects);
    } else {
        xmlLog->AddMessage(severityOfLevel(level), ex);
    }
}

void LogFacade::WriteText(int level, bool report, const std::string& text, const ObjectList* objects) {
    if (debugLog != nullptr) {
        if (level == level::kError) {
            debugLog->Error(text);
        } else {
            debugLog->Info(text);
        }
    }
    if (report && level <= kLastReportedLevel && reportHook != nullptr) {
        reportHook(ComponentOf(objects), text);
    }
}

std::string LogFacade::ComponentOf(const ObjectList* objects) const {
    if (objects != nullptr && !objects->empty()) {
        return objects->back().second;
    }
    const ObjectList current = xmlLog != nullptr ? xmlLog->GetObjects() : ObjectList();
    return current.empty() ? "general" : current.back().second;
}

void LogFacade::LogIfEnabled(int level, bool report, const IExTraceable& ex) {
    LogIfEnabled(level, report, ex, nullptr);
}

void LogFacade::LogIfEnabled(int level, bool report, const IExTraceable& ex, const ObjectList* objects) {
    if (level <= this->level) {
        Write(level, report, ex, objects);
    }
}

void LogFacade::SetSinks(DebugLog* debug, Log* xml) {
    debugLog = debug;
    xmlLog = xml;
}

void SetReportHook(ReportHook hook) {
    reportHook = hook;
}

LogFacade* GetLogFacade() {
    return instance.get();
}

void AttachLogFacade() {
    if (!instance) {
        instance = std::make_unique<LogFacade>();
    }
    instance->SetSinks(currentDebugLog, currentLog);
    ++attachedSinks;
}

void DetachLogFacade() {
    if (!instance) {
        return;
    }
    instance->SetSinks(currentDebugLog, currentLog);
    if (--attachedSinks == 0) {
        instance.reset();
    }
}

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

int severityOfLevel(int level) {
    switch (level) {
    case level::kError:
        return severity::kError;
    case level::kWarning:
        return severity::kWarning;
    default:
        return severity::kInfo;
    }
}

int levelOfSeverity(int severity) {
    switch (severity) {
    case severity::kError:
        return level::kError;
    case severity::kWarning:
        return level::kWarning;
    case severity::kInfo:
        return level::kInfo;
    default:
        return level::kVerbose;
    }
}

} // namespace brask
