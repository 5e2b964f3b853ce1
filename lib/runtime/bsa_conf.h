#pragma once

// The panel's runtime configuration: one text file of names and values, and the defaults compiled into the
// program for the names that it knows, so that it works where the file is missing or lacks a line.
//
// Lines about the file are logged at level 12, which only syslog takes; lines about the program's state at
// level 3. Nothing here is safe to call from two threads at once.

#include "lib/runtime/bsa_conf_load.h"
#include "lib/runtime/bsa_conf_table.h"

namespace brask {

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
