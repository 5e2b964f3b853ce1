#pragma once

#include <string>
#include <string_view>

namespace dumpsig {

/// Writes all of `bytes`. `name` is what the SystemError of a failure calls the file.
void writeAll(int fd, std::string_view bytes, const std::string& name);

/// The same to standard output.
void writeToStandardOutput(std::string_view bytes);

/// Tells people what went wrong: "dumpsig: ", the text on one line, a line end, on standard error.
void complain(std::string_view text);

} // namespace dumpsig
