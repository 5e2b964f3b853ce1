#pragma once

// The debug log: plain text lines in files, written through log4cpp. What goes where is said by the file
// getBmmConfigFile(), which may use the variables LOG_FILE_NAME (the session's log file) and
// CUSTOM_LOG_FILE_NAME (the value of the environment variable CUSTOM_LOG, empty if that is not set).

#include "commons/log/log_facade.h"

#include <string>

namespace brask {

class Log4cppDebugLog final : public DebugLog {
public:
    Log4cppDebugLog(bool verbose, bool debug) : verbose(verbose), debug(debug) {}

    /// Shuts log4cpp down: whatever is logged afterwards goes nowhere.
    ~Log4cppDebugLog() override;

    void Info(const std::string& message) override;
    void Error(const std::string& message) override;
    /// The text of GetErrorText.
    void Info(const IExTraceable& ex) override;

    bool IsVerbose() const override { return verbose; }

    bool IsDebug() const override { return debug; }

private:
    bool verbose;
    bool debug;
};

/// The debug log exists while this object lives; needs a session.
///
/// log4cpp is configured by the first such object in the process, and only by that one: a later debug log has
/// no target.
class DebugLogLifetimeController {
public:
    /// Configures log4cpp, then attaches the debug log to the front end, whose level becomes 4 with `debug`
    /// and 3 without: `verbose` reaches no more than IsVerbose(), and not even that beside `debug`. The
    /// appender "A2" is taken off the root category unless `debug` is set, the appender "CUSTOMLOG" is put
    /// there if CUSTOM_LOG is set. The session's log file is made or found first, see SessionLogFile, and one
    /// that was made for nothing vanishes. Raises what that raises, log4cpp::ConfigureFailure for a file that
    /// is missing or broken, Error<&AssertionFailed, ExDefault> without a session, and what
    /// getBmmConfigFile() raises; there is no debug log then.
    DebugLogLifetimeController(bool verbose, bool debug);

    DebugLogLifetimeController(const DebugLogLifetimeController&) = delete;
    DebugLogLifetimeController& operator=(const DebugLogLifetimeController&) = delete;

    ~DebugLogLifetimeController();
};

} // namespace brask
