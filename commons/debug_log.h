#pragma once

// The debug log of a session, a sink of the log front end.

#include "commons/log_facade.h"
#include "commons/run/debug_log.h"
