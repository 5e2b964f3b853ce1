#pragma once

#include <string>

namespace log4cpp_additions {

/// A log file that the caller has opened itself, in a place where it can't trust a name to stay what it is.
/// File appenders with this file name write to the descriptor and never follow the name.
struct OpenLog {
    std::string fileName;
    int descriptor; ///< Stays the caller's. With -1 nothing is written to this file.
};

} // namespace log4cpp_additions
