#pragma once

// The utilities that utils.h does not hold: guarded calls, the locale, times and random texts.

#include "commons/log/call_no_throw.h"
#include "commons/run/locale_check.h"
#include "commons/text/random_text.h"
#include "commons/text/time_utils.h"
