#pragma once

// Small operations on texts, points in time as local time, random names, and the table of compression levels.

#include <chrono>
#include <ctime>
#include <string>

namespace brask {

/// `text` with "?" in place of each byte that can't be UTF-8 as iconv knows it, which is the form of old with
/// up to six bytes. A sequence that the end of the text cuts off is dropped without a replacement. Raises
/// std::system_error when there is no converter.
std::string SanitizeUtf8(const std::string& text);

/// `text` with a backslash before every character that has a meaning in a regular expression.
std::string escapeRegex(const std::string& text);

/// The first 30 lines of `text`, and "... (truncated)" as one more if there were others, joined by line
/// feeds. Carriage returns and line feeds each end a line, so a pair of them leaves an empty line in between.
std::string truncateLines(const std::string& text);

/// The level that a compression method knows for the abstract `level`, 0 (none) to 4 (best). Method 0 has the
/// levels 0 to 9, method 1 the levels 0 to 19. Raises std::runtime_error for any other method, or level.
int compressionLevelFor(int method, unsigned level);

/// The local time at `when`, in whole seconds. Raises std::system_error.
tm toLocalTime(std::chrono::system_clock::time_point when);

/// The local time at `when` in the form "20240229T235959". Raises what toLocalTime raises.
std::string formatTimestamp(std::chrono::system_clock::time_point when);

// Random names and passwords come from rand(), seeded with the time of the first use, which anyone who knows
// that second can repeat: good enough to be different, not to keep a secret.

/// Seven characters out of the letters and digits of ASCII.
std::string randomName();

/// `length` characters, none for a negative length: digits, capital and small letters, and signs out of
/// "~!@#$;%^&()-_+=,.{}[]", in random order. From a length of 4 on, each of the four classes is there.
std::string randomPassword(int length);

} // namespace brask
