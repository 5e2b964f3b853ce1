#pragma once

namespace brask {

/// Reads a non-negative decimal int that is written in its one canonical form: digits alone, no leading zero
/// but in "0" itself, no sign, nothing before or after. Returns -1 for any other text, for null, and for a
/// number above 2147483647. Success leaves errno as it was.
int parseStrictNumber(const char* text);

} // namespace brask
