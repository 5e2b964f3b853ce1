#pragma once

// Signing and verifying dumps, under one name.

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/digest.h"
#include "backup_sign_lib/dump_file_stream.h"
#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
