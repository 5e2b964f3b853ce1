#pragma once

// The syntax of the runtime configuration, and a file of it in memory.
//
// The file is read line by line, each line by itself:
//
//     # A comment; blank lines are ignored too.
//     HTTPD_VHOSTS_D  /var/www/vhosts    # the name, white space, the value, perhaps a comment
//
// A name is letters, digits and underscores. A value may hold blanks; there is no quoting and no escaping,
// and a '#' ends it wherever it is. A later line of the same name wins. A line that can't be read is
// logged and skipped.

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

/// Adds the pairs of one file to `conf`. Returns 0, or -1 with errno set when the file can't be opened or
/// read or memory runs out; `conf` then holds what was read so far, for bsaConfFree.
int bsaConfLoad(const char* path, BsaConf* conf);

/// Frees a BsaConf from malloc with all its strings; null is accepted. All `capacity` slots are freed, not
/// only those in use, so beyond the first 20 (which start out cleared) every slot must be in use.
void bsaConfFree(BsaConf* conf);

} // namespace brask
