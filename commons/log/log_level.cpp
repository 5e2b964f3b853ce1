#include "commons/log/log_level.h"

#include "commons/errors/severity.h"

namespace brask {

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
