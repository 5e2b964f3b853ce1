#pragma once

// The exception family of the library, under one name: base classes, Error, Exc, and the tags that several
// units share. A tag that only one unit raises stands with that unit.

#include "commons/error.h"
#include "commons/ex_base.h"
#include "commons/exc.h"
#include "commons/shared_tags.h"
