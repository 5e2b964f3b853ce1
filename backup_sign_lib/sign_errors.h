#pragma once

// What can go wrong with a signature. All are raised as Error<&Tag, ExDefault>.

#include "commons/errors/error.h"

namespace brask {

/// Signing, and reading the volumes of a dump, on behalf of a verification too.
BRASK_ERROR_TAG(SignError, "{}")
/// The dump isn't what this server signed, or that can't be told.
BRASK_ERROR_TAG(VerifyError, "{}")
BRASK_ERROR_TAG(WrongSignatureDataError, "{}")
BRASK_ERROR_TAG(DigestCalculationError, "{}: {}")
BRASK_ERROR_TAG(FileNotFoundError, "File {} not found")
BRASK_ERROR_TAG(IsNotRegularFileError, "{} is not regular file")

/// Making a key pair.
BRASK_ERROR_TAG(RsaKeyGenerationError, "{}")
/// Publishing a new public key.
BRASK_ERROR_TAG(GenerationError, "{}")
/// Fetching the key pair from its keeper, and handing a new one over.
BRASK_ERROR_TAG(CertificateNotFoundError, "{}")
BRASK_ERROR_TAG(SetBackupCertificateError, "{}")

} // namespace brask
