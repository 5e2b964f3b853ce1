#pragma once

// Failures that carry a code from below the program: an errno value, or the OpenSSL error queue.

#include "commons/crypto/openssl.h"
#include "commons/errors/system_error.h"
