#pragma once

// std::format and formatMessage under one name, whatever the compiler has.

#include "commons/errors/format.h"
