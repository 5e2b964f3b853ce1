#pragma once

// Guarded calls and the locale, which utils.h does not hold, and the text utilities.

#include "commons/log/log_facade.h"
#include "commons/run/locale_check.h"
#include "commons/text/text_utils.h"
