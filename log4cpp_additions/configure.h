#pragma once

#include "log4cpp_additions/open_log.h"

#include <map>
#include <string>

namespace log4cpp_additions {

/// log4cpp::PropertyConfigurator::configure with additions; every appender and layout type of the stock
/// configurator works as there.
///
/// - ${name} in a value is looked up in `variables` first, then among the file's own keys, then in the
///   environment, and reads as empty when it is nowhere. Values of `variables` may hold any text but NUL.
/// - The appender type "StderrAppender" is a "ConsoleAppender" that writes to the standard error stream.
/// - %C and %P in the conversion pattern of a "PatternLayout", see ColorPatternLayout.
/// - Files that are made, the successors of rolled-over ones included, are not readable by everybody: their
///   mode is 0640, less the umask.
/// - Appenders of `openLog` write to its descriptor. The successor of a rolled-over one gets its group and
///   mode. Only a DailyRollingFileAppender can't be served so, and opens the file by its name.
///
/// Returns whether an appender writes to `openLog`. Raises log4cpp::ConfigureFailure: "File NAME does not
/// exist" for a file that can't be opened, otherwise for what the stock configurator refuses. After a failure
/// the categories are as before, and no file is open. The appenders live until the process ends.
bool configure(const std::string& initFileName, const std::map<std::string, std::string>& variables,
               const OpenLog& openLog = {.fileName = "", .descriptor = -1});

} // namespace log4cpp_additions
