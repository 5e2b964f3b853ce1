#include "commons/run/log_object_scope.h"

#include "commons/log/log_facade.h"
#include "commons/run/object_display_names.h"

namespace brask {

namespace {

constexpr int kVerbose = 3;

} // namespace

LogObjectScope::LogObjectScope(const std::string& name, int kind)
    : title(name + " " + objectDisplayName(kind)) {
    logMessage(kVerbose, "=> {}", title);
    if (currentLog != nullptr) {
        currentLog->AddObject(name, objectDisplayName(kind));
    }
}

LogObjectScope::~LogObjectScope() {
    logMessage(kVerbose, "++ {}", title);
    if (currentLog != nullptr) {
        currentLog->RemoveEmptyObject();
    }
}

} // namespace brask
