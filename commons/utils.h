#pragma once

// The file and text utilities, under one name. commons.h holds the others.

#include "commons/file_guards.h"
#include "commons/file_utils.h"
#include "commons/rename.h"
#include "commons/retry.h"
#include "commons/text_utils.h"
