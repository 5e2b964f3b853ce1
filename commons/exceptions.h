#pragma once

// The exception family of the library: base classes, Error, Exc, and the tags that several units share. A tag
// that only one unit raises is defined with that unit.

#include "commons/errors/error.h"
#include "commons/errors/ex_base.h"
#include "commons/errors/exc.h"
