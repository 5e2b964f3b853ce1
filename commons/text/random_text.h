#pragma once

// Random names and passwords. They come from rand(), seeded with the time of the first use, which anyone who
// knows that second can repeat: good enough to be different, not to keep a secret.

#include <string>

namespace brask {

/// Seven characters out of the letters and digits of ASCII.
std::string randomName();

/// `length` characters, none for a negative length: digits, capital and small letters, and signs out of
/// "~!@#$;%^&()-_+=,.{}[]", in random order. From a length of 4 on, each of the four classes is there.
std::string randomPassword(int length);

} // namespace brask
