#pragma once

// Temporary files and directories.

#include "commons/files/temp_file.h"
