#pragma once

#include "commons/errors/text_formatters.h"
#include "commons/log/log_facade.h"

#include <new>
#include <string>
#include <vector>

namespace test_support {

/// A debug log that keeps its lines, attached to the log's front end while it lives. What the error report of
/// a grave message logs when nobody takes it is left out.
class RecordingLog : public brask::DebugLog {
public:
    explicit RecordingLog(int level = 3) {
        brask::currentDebugLog = this;
        brask::AttachLogFacade();
        brask::GetLogFacade()->SetLevel(level);
    }

    ~RecordingLog() override {
        brask::currentDebugLog = nullptr;
        brask::DetachLogFacade();
    }

    void Info(const std::string& message) override {
        if (message.find("error report") == std::string::npos &&
            message.find("send-error-report") == std::string::npos && !message.starts_with("ParamError ")) {
            lines.push_back(message);
        }
    }

    void Error(const std::string& message) override { lines.push_back("error: " + message); }

    void Info(const brask::IExTraceable& ex) override { Info(brask::GetErrorText(ex)); }

    bool IsVerbose() const override { return false; }

    bool IsDebug() const override { return false; }

    std::vector<std::string> lines;
};

/// A debug log that has run out of memory.
class FailingLog : public RecordingLog {
public:
    void Info(const std::string& /*message*/) override { throw std::bad_alloc(); }
};

} // namespace test_support
