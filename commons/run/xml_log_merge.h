#pragma once

#include "commons/log/log_facade.h"

#include <string>

namespace brask {

/// Adds the messages of another "execution-result" file, each at the path of objects that it has there,
/// counted from the root of `log`; objects of the same name and type become one. Elements that are neither
/// message nor object are left out, inner exceptions are too. Raises what reading the file raises
/// (tError_WrongDoc when it is another document), with nothing added, and tError_XPath_CantEvaluate at a
/// message without description or severity.
void AddResultFile(Log& log, const std::string& path);

/// The same for the current log; nothing happens when there is none.
void AddResultFile(const std::string& path);

} // namespace brask
