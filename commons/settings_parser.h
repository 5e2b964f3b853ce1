#pragma once

// The syntax of the settings file, and the values read from it.

#include "commons/panel/settings_parser.h"
