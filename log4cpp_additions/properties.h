#pragma once

// The property file: its text as keys and values.

#include <istream>
#include <map>
#include <string>

namespace log4cpp_additions {

/// Keys without the optional first piece "log4cpp." or "log4j.".
using Properties = std::map<std::string, std::string>;

/// `text` without the blanks round it.
std::string trim(const std::string& text);

/// Reads `in` as the stock configurator would: '#' begins a comment anywhere, both sides of the first '=' are
/// trimmed, of a repeated key the first line counts. A value's ${name} is replaced by the entry of
/// `variables`, else by the value of the file's own key `name`, wherever that is, else by the
/// environment's, else by nothing; what a key says of itself is not the file's. What came from `variables` or
/// the environment is not looked at again. Raises log4cpp::ConfigureFailure for a value that grows beyond
/// 1 MiB.
Properties loadProperties(std::istream& in, const std::map<std::string, std::string>& variables);

} // namespace log4cpp_additions
