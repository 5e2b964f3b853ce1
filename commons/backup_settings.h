#pragma once

// The tuning values of the backup tools.

#include "commons/panel/backup_settings.h"
