#pragma once

// The variables that the program has defaults for. Internal to bsa_conf.

#include "lib/runtime/bsa_conf.h"

namespace brask {

/// Two parallel arrays: row by row, a name and its default.
extern const char* const bsaConfNames[kBsaConfRows];
extern const char* const bsaConfDefaults[kBsaConfRows];

} // namespace brask
