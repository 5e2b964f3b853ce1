#pragma once

// The variables that the program has defaults for.

namespace brask {

/// The number of variables with a default. A variable's number is its row in the table.
inline constexpr unsigned kBsaConfRows = 31;

/// Rows that are asked for by number.
enum BsaConfRow : unsigned {
    kMailnamesDir = 1,
    kMailmanVarDir = 10,
    kMailmanRootDir = 11,
    kPgsqlBinDir = 13,
    kMysqlBinDir = 14,
    kVhostsDir = 25,
};

/// Two parallel arrays: row by row, a name and its default.
extern const char* const bsaConfNames[kBsaConfRows];
extern const char* const bsaConfDefaults[kBsaConfRows];

} // namespace brask
