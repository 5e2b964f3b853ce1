#pragma once

// The lines in the debug log that say when a tool starts and how it ends.

#include "commons/run/start_stop_logger.h"
