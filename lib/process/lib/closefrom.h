#pragma once

namespace brask {

/// Closes every descriptor at or above `lowestFd`; nothing is reported. Meant for a freshly forked child. Not
/// the C library's function of this name: inside the namespace, the plain name means this one.
void closefrom(int lowestFd);

/// Reads a descriptor's name in /proc/self/fd: a non-negative decimal int in its one canonical form, digits
/// alone, no leading zero but in "0" itself, no sign, nothing before or after. Returns -1 for any other text,
/// for null, and for a number above 2147483647. Success leaves errno as it was.
int parseStrictNumber(const char* text);

} // namespace brask
