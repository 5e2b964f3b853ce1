#pragma once

// Where things lie: the product tree and the session directory, under one name.

#include "commons/product_paths.h"
#include "commons/session_files.h"
