#pragma once

// Short XML reports of grave log messages, handed to the panel's utility "send-error-report". A report never
// harms the run: whatever fails is logged and dropped.

#include <string>

namespace brask {

class ErrorReportSender {
public:
    /// The one sender of the process.
    static ErrorReportSender& instance();

    /// Makes the log front end send its reports through instance().
    static void installForLog();

    ErrorReportSender(const ErrorReportSender&) = delete;
    ErrorReportSender& operator=(const ErrorReportSender&) = delete;

    /// Hands a report about `message` to the utility, unless reports are turned off. `component` says what
    /// the message is about. Raises nothing but what the log's sinks raise.
    void Send(const std::string& component, const std::string& message);

    /// Whether the administrator allows reports: they are off when the file that turns them off exists, of
    /// any type. The answer of the first call stays for the life of the process.
    bool IsEnabled();

    /// The report: a document with the root "error" and the children "component", "message", "file", "line"
    /// and "trace", and "additional_info" when a test has left its data. What no XML document can
    /// hold is replaced by "?".
    std::string PrepareContent(const std::string& component, const std::string& message) const;

    /// The name of the running tool, kept beside the origin. It does not enter the report.
    void SetComponentName(const std::string& name) { componentName = name; }

    const std::string& GetComponentName() const { return componentName; }

private:
    ErrorReportSender() = default;

    std::string origin;
    std::string componentName;
};

} // namespace brask
