#pragma once

// The utilities that utils.h does not hold, under one name: guarded calls, the locale, times and random
// texts.

#include "commons/call_no_throw.h"
#include "commons/locale_check.h"
#include "commons/random_text.h"
#include "commons/time_utils.h"
