#pragma once

// What a command leaves: its output, what it complains of, its exit code.

#include "commons/errors/error.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace dumpsig {

/// How a command ends: what a script sees.
enum ExitCode : int {
    kIntact = 0,    ///< the answer is yes, or the work is done
    kNotIntact = 1, ///< the answer is no: not intact, not signed, unreadable document
    kUnknown = 2,   ///< no answer: a mistake in the call, or something could not be read or written
};

/// What makes kUnknown is an exception. A failed system call is a brask::SystemError that names the file;
/// what else goes wrong is one of these: a mistake in the call,
BRASK_ERROR_TAG(UsageError, "{}")
/// or something about a file: its name, and what is wrong with it.
BRASK_ERROR_TAG(FileError, "{}: {}")

/// Writes all of `bytes`. `name` is what the SystemError of a failure calls the file.
void writeAll(int fd, std::string_view bytes, const std::string& name);

/// The same to standard output.
void writeToStandardOutput(std::string_view bytes);

/// Tells people what went wrong: "dumpsig: ", the text on one line, a line end, on standard error.
void complain(std::string_view text);

/// A text of others, such as a parser's view of a damaged document, made fit for one line of ours: "; " for
/// each line end inside it, none at its end, and "?" for control characters, which could play tricks on a
/// terminal.
std::string oneLine(std::string_view text);

/// `text` with U+FFFD in place of each byte that is no part of UTF-8.
std::string toUtf8(std::string_view text);

/// Lower-case digits without anything between.
std::string hexadecimal(const unsigned char* bytes, std::size_t size);

} // namespace dumpsig
