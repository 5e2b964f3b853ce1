#pragma once

#include <map>
#include <string>

namespace log4cpp_additions {

/// log4cpp::PropertyConfigurator::configure with four additions; every appender and layout type of the stock
/// configurator works as before.
///
/// - ${name} in a value is looked up in `variables` first, then among the file's own keys above it, then in
/// the
///   environment, and reads as empty when it is nowhere. Values of `variables` may hold any text but NUL.
/// - The appender type "StderrAppender" is a "ConsoleAppender" that writes to the standard error stream.
/// - %C and %P in the conversion pattern of a "PatternLayout", see ColorPatternLayout.
///
/// Raises log4cpp::ConfigureFailure: "File NAME does not exist" for a file that can't be opened, otherwise
/// for what the stock configurator refuses. After a failure the appenders of the file are closed and attached
/// to no category.
///
/// Changes the environment for a moment where a value needs it: not for use beside threads that read it.
void configure(const std::string& initFileName, const std::map<std::string, std::string>& variables);

} // namespace log4cpp_additions
