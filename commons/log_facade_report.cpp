// The last step of a log call, the error report. It stands in a file of its own because the report's sender
// logs itself: it stands above the front end, and the front end's other file must not know it.

#include "commons/error_report.h"
#include "commons/log_facade.h"

namespace brask {

void LogFacade::Report(const std::string& text, const ObjectList* objects) const {
    std::string component = "general";
    if (objects != nullptr && !objects->empty()) {
        component = objects->back().second;
    } else if (xmlLog != nullptr) {
        const ObjectList current = xmlLog->GetObjects();
        if (!current.empty()) {
            component = current.back().second;
        }
    }
    ErrorReportSender::instance().Send(component, text);
}

} // namespace brask
