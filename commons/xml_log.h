#pragma once

// The XML execution log, a sink of the log front end.

#include "commons/log_facade.h"
#include "commons/run/xml_log.h"
