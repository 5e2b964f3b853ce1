#pragma once

// The property file: its text as keys and values, and the way of a changed set of them to the stock
// configurator.

#include <istream>
#include <map>
#include <string>

namespace log4cpp_additions {

/// Keys without the optional first piece "log4cpp." or "log4j.".
using Properties = std::map<std::string, std::string>;

/// Reads `in` as the stock configurator would: '#' begins a comment anywhere, both sides of the first '=' are
/// trimmed, of a repeated key the first line counts. A value's ${name} is replaced by the entry of
/// `variables`, else by the value of the file's own key `name` if it stands above, else by the environment's,
/// else by nothing. What was put in is not looked at again.
Properties loadProperties(std::istream& in, const std::map<std::string, std::string>& variables);

/// Runs the stock configurator on `properties`. Every value arrives there byte for byte, those included that
/// a property file can't express (with '#', "${", line ends or outer blanks in them). Raises
/// log4cpp::ConfigureFailure as the stock configurator does, and when the memory file for it can't be made.
void runStockConfigurator(const Properties& properties);

} // namespace log4cpp_additions
