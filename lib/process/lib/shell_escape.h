#pragma once

// Escaping of texts for a reader who knows the shell: command lines in messages and logs.

#include <string>

namespace brask {

/// One mark for each of the 256 bytes: '*' for a byte that is escaped by a backslash, 'n' for the line feed,
/// which goes between single quotes, '-' for a byte that is written as it is.
extern const char* const escape_chars;

/// A copy of `text` with each byte written as its mark says. An empty text stays empty.
std::string escapeForShell(const std::string& text);

/// `text` between single quotes, with each single quote inside as the four characters '\''.
std::string shellQuote(const std::string& text);

/// A copy of `text` with a backslash before every byte that is in `set`. From malloc: the caller frees it.
/// Null if either argument is null or memory runs out.
char* backslashEscape(const char* set, const char* text);

/// True when no byte of `text` needs escaping. A null or empty text is safe.
bool isSafeWord(const char* text);

/// Raises std::runtime_error unless isSafeWord(*text).
void checkEscapeChars(const char* const* text);

} // namespace brask
