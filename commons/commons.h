#pragma once

// The utilities that utils.h does not hold: guarded calls, the locale, times and random texts.

#include "commons/log/log_facade.h"
#include "commons/run/locale_check.h"
#include "commons/text/text_utils.h"
