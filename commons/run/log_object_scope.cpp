#include "commons/run/log_object_scope.h"

#include "commons/log/log_facade.h"
#include "commons/run/object_display_names.h"

namespace brask {

LogObjectScope::LogObjectScope(const std::string& name, int kind)
    : title(name + " " + objectDisplayName(kind)) {
    logMessage(level::kVerbose, "=> {}", title);
    if (currentLog != nullptr) {
        currentLog->AddObject(name, objectDisplayName(kind));
    }
}

LogObjectScope::~LogObjectScope() {
    logMessage(level::kVerbose, "++ {}", title);
    if (currentLog != nullptr) {
        currentLog->RemoveEmptyObject();
    }
}

} // namespace brask
