#pragma once

// The file and text utilities. commons.h holds the others.

#include "commons/crypto/openssl.h"
#include "commons/files/file_guards.h"
#include "commons/files/file_utils.h"
#include "commons/files/rename.h"
#include "commons/files/retry.h"
#include "commons/text/text_utils.h"
