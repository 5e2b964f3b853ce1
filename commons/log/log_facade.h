#pragma once

// The front end of all diagnostic output. It feeds at most two sinks, which it does not own: a debug log of
// plain text lines and a structured log, the XML execution log. Either may be missing, and without any sink
// there is no front end at all: a log site asks GetLogFacade() first and does nothing on null.
//
// Levels say how important a line is; severities, how grave an exception.

#include "commons/errors/ex_base.h"
#include "commons/errors/format.h"

#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <utility>

namespace brask {

/// The levels of the logs: 0 is graver than 4.
namespace level {
inline constexpr int kError = 0;
inline constexpr int kWarning = 1;
inline constexpr int kInfo = 2;
inline constexpr int kVerbose = 3;
inline constexpr int kDebug = 4;
} // namespace level

/// 0 gives 40, 1 gives 30, any other level 20.
int severityOfLevel(int level);

/// 40 gives 0, 30 gives 1, 20 gives 2, any other severity 3.
int levelOfSeverity(int severity);

/// The debug log: plain text lines.
class DebugLog {
public:
    DebugLog() = default;
    DebugLog(const DebugLog&) = delete;
    DebugLog& operator=(const DebugLog&) = delete;
    virtual ~DebugLog() = default;

    virtual void Info(const std::string& message) = 0;
    virtual void Error(const std::string& message) = 0;
    virtual void Info(const IExTraceable& ex) = 0;
    virtual bool IsVerbose() const = 0;
    virtual bool IsDebug() const = 0;
};

/// A path of objects, outermost first: pairs of name and type.
using ObjectList = std::list<std::pair<std::string, std::string>>;

/// The structured log: messages in a tree of objects, with an overall status that can only rise.
class Log {
public:
    Log() = default;
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    virtual ~Log() = default;

    virtual void RaiseStatus(int severity) = 0;
    /// The first two forms put the message at the current object, the last two at the object that `objects`
    /// names from the root, which is made if absent. The severity is the exception's own unless it is given.
    virtual void AddMessage(const IExTraceable& ex) = 0;
    virtual void AddMessage(int severity, const IExTraceable& ex) = 0;
    virtual void AddMessage(const IExTraceable& ex, const ObjectList& objects) = 0;
    virtual void AddMessage(int severity, const IExTraceable& ex, const ObjectList& objects) = 0;
    /// Opens an object under the current one.
    virtual void AddObject(const std::string& name, const std::string& type) = 0;
    /// Closes the current object; one that collected nothing leaves no trace.
    virtual void RemoveEmptyObject() = 0;
    /// The path of the current object.
    virtual ObjectList GetObjects() const = 0;
};

class LogFacade {
public:
    /// Logs a text, or an exception as the text of GetErrorText. The structured log gets levels 0 to 2 only,
    /// with the severity of the level; `objects`, if not null, names the object that the message belongs to.
    /// Level 0 reaches the debug log as an error, any other as information. If `report` is true, levels 0 and
    /// 1 go to the report hook as well, whether or not there is a sink. The level is not compared with
    /// GetLevel(). What a sink throws passes through.
    void Write(int level, bool report, const std::string& message, const ObjectList* objects);
    void Write(int level, bool report, const IExTraceable& ex, const ObjectList* objects);

    /// Write, unless `level` is above GetLevel().
    void LogIfEnabled(int level, bool report, const IExTraceable& ex);
    void LogIfEnabled(int level, bool report, const IExTraceable& ex, const ObjectList* objects);

    void SetLevel(int value) { level = value; }

    int GetLevel() const { return level; }

    /// The sinks to feed; either may be null.
    void SetSinks(DebugLog* debug, Log* xml);

private:
    bool feedsXmlLog(int level) const;
    void AddToXmlLog(int level, const IExTraceable& ex, const ObjectList* objects);
    /// What follows the structured log's part: the debug log, and the report.
    void WriteText(int level, bool report, const std::string& text, const ObjectList* objects);

    /// The type of the object that `objects`, or else the structured log's current path, ends in; "general"
    /// when there is none.
    std::string ComponentOf(const ObjectList* objects) const;

    DebugLog* debugLog = nullptr;
    Log* xmlLog = nullptr;
    int level = level::kInfo;
};

/// Sends an error report about `component`, an object's type or "general".
using ReportHook = void (*)(const std::string& component, const std::string& text);

/// Sets what Write calls for a report; null, as at the start of the process, sends none. The sender is above
/// the front end and logs itself, so it is handed in: see ErrorReportSender::installForLog.
void SetReportHook(ReportHook hook);

/// The sinks of the process; whoever creates a sink stores it here and then attaches.
extern DebugLog* currentDebugLog;
extern Log* currentLog;

/// The front end, or null while no sink is attached.
LogFacade* GetLogFacade();

/// A sink has joined: makes the front end if there is none, and gives it the current sinks.
void AttachLogFacade();

/// A sink has left: gives the front end the sinks that remain, and deletes it with the last. Sinks may leave
/// in any order; the front end's level survives a change of sink.
void DetachLogFacade();

/// The usual log site: writes the formatted text, with `report` true, if there is a front end. A template
/// that fails to format becomes formatMessage's explanation.
template <class... Args>
void logMessage(int level, std::string_view messageTemplate, const Args&... args) {
    if (LogFacade* log = GetLogFacade()) {
        log->Write(level, true, formatMessage(messageTemplate, args...), nullptr);
    }
}

/// A note of progress: logMessage at the verbose level, but only if the front end's own level is that high.
template <class... Args>
void logNote(std::string_view messageTemplate, const Args&... args) {
    if (const LogFacade* log = GetLogFacade(); log != nullptr && log->GetLevel() > level::kInfo) {
        logMessage(level::kVerbose, messageTemplate, args...);
    }
}

/// Calls `fn`, a step whose failure must not stop the caller. Whatever it throws, an ExFatal error too, is
/// swallowed and written to the log at level 4 with `message` in front; an error of the IExTraceable family
/// is then written once more with all its facts. An empty `fn` counts as one that throws. What a sink of the
/// log throws passes through.
void callNoThrow(const std::function<void()>& fn, const std::string& message);

} // namespace brask
