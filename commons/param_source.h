#pragma once

// Where the product root and the other site parameters come from.

#include "commons/panel/param_source.h"
