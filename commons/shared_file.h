#pragma once

// Records in a file that several processes write.

#include "commons/files/shared_file.h"
