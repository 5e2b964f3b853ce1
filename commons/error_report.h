#pragma once

// Short XML reports of grave log messages.

#include "commons/log_facade.h"
