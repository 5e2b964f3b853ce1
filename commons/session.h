#pragma once

// Where things lie: the product tree and the session directory.

#include "commons/panel/product_paths.h"
#include "commons/run/session_files.h"
