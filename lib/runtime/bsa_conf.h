#pragma once

// The panel's runtime configuration: one text file of names and values, and the defaults compiled into the
// program for the names that it knows, so that it works where the file is missing or lacks a line.
//
// The file is read line by line, each line by itself:
//
//     # A comment; blank lines are ignored too.
//     HTTPD_VHOSTS_D  /var/www/vhosts    # the name, white space, the value, perhaps a comment
//
// A name is letters, digits and underscores. A value may hold blanks; there is no quoting and no escaping,
// and a '#' ends it wherever it stands. A later line of the same name wins. A line that can't be read is
// logged and skipped.
//
// Lines about the file are logged at level 12, which only syslog takes; lines about the program's state at
// level 3. Nothing here is safe to call from two threads at once.

#include <cstddef>

namespace brask {

struct BsaConfEntry {
    char* name;  ///< from strdup, owned by the BsaConf
    char* value; ///< from strdup, owned by the BsaConf
};

/// A loaded file. All fields are zero before the first load.
struct BsaConf {
    BsaConfEntry* entries;
    size_t capacity; ///< slots allocated
    size_t count;    ///< slots in use
    int sorted;      ///< non-zero when the entries are in strcmp order of their names
};

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

/// Adds the pairs of one file to `conf`. Returns 0, or -1 with errno set when the file can't be opened or
/// read or memory runs out; `conf` then holds what was read so far, for bsaConfFree.
int bsaConfLoad(const char* path, BsaConf* conf);

/// Frees a BsaConf from malloc with all its strings; null is accepted. All `capacity` slots are freed, not
/// only those in use, so beyond the first 20 (which start out cleared) every slot must be in use.
void bsaConfFree(BsaConf* conf);

/// Loads the site's file unless that has succeeded before. Returns 0 or -1. Once loaded, the configuration is
/// never read again nor freed: the strings that the look-ups below return stay valid to the end of the
/// process.
int bsaConfInit();

/// The file's value for any name, or null. Loads the file if need be, as all look-ups do; a file that could
/// not be loaded is tried, and its failure logged, at each look-up.
const char* bsaConfGet(const char* name);

/// The file's value for a row below kBsaConfRows, or null. A value found is remembered.
const char* bsaConfGetCached(unsigned row);

/// The file's value for a row below kBsaConfRows, or the row's default. Never null.
const char* bsaConfGetById(unsigned row);

/// The file's value for a name of the table, or its default. Null, after a log line, for a name outside the
/// table; the table's last row, a sentinel, counts as outside.
const char* bsaConfGetDefault(const char* name);

} // namespace brask
