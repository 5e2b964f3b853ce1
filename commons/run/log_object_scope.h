#pragma once

#include <string>

namespace brask {

/// Work on one object of the run: while it lives, messages of the current log belong to the object. Begin and
/// end are noted in the debug log. The current log must stay the same meanwhile; without one only the notes
/// are written.
class LogObjectScope {
public:
    /// `kind` is an id of objectDisplayName, whose text also becomes the object's type.
    LogObjectScope(const std::string& name, int kind);
    LogObjectScope(const LogObjectScope&) = delete;
    LogObjectScope& operator=(const LogObjectScope&) = delete;

    /// Closes the object; one that collected nothing leaves no trace. A failure ends the process.
    ~LogObjectScope();

private:
    std::string title;
};

} // namespace brask
