#pragma once

// The log front end, with error reports behind it: a program that includes this header, or one of the sinks'
// headers beside it, sends reports of grave messages without further ado.

#include "commons/log/log_facade.h"
#include "commons/run/error_report.h"

namespace brask {

/// The front end knows no sender of its own; this gives it one before the first message can be logged.
inline const bool errorReportsInstalled = (ErrorReportSender::installForLog(), true);

} // namespace brask
