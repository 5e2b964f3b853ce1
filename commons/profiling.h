#pragma once

// Records of how long the steps of a run take.

#include "commons/run/profiling.h"
