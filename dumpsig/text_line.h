#pragma once

// Texts of others, such as a parser's view of a damaged document, made fit for one line of ours.

#include <cstddef>
#include <string>
#include <string_view>

namespace dumpsig {

/// `text` on one line: "; " for each line end inside it, none at its end, and "?" for control characters,
/// which could play tricks on a terminal.
std::string oneLine(std::string_view text);

/// `text` with U+FFFD in place of each byte that is no part of UTF-8.
std::string toUtf8(std::string_view text);

/// Lower-case digits without anything between.
std::string hexadecimal(const unsigned char* bytes, std::size_t size);

} // namespace dumpsig
