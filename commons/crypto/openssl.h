#pragma once

// OpenSSL as a whole: how it is started, and its failed calls as exceptions.

#include "commons/errors/error.h"

#include <source_location>
#include <string>
#include <vector>

namespace brask {

/// Makes OpenSSL ready for this process. No configuration file is read, whatever OPENSSL_CONF says: it can
/// name code to be loaded. Nor are the tables of the algorithms' old names filled, which nothing here asks
/// and which cost a fifth of a short run.
///
/// To be called at the start of main, before anything else of OpenSSL: later it has no effect. Raises
/// OpenSslException.
void setUpOpenSsl();

/// Empties OpenSSL's error queue of this thread: one text per entry, oldest first.
std::vector<std::string> takeOpenSslErrors();

BRASK_ERROR_TAG(OpenSslError, "{}: OpenSSL error: {}")

/// A failed OpenSSL call. Its text is `message`, ": OpenSSL error: " and all of the error queue, one line for
/// each entry, oldest first. The queue is empty afterwards.
class OpenSslException : public Error<&OpenSslError, ExDefault> {
public:
    OpenSslException(const std::source_location& where, const std::string& message);

    OpenSslException* Clone() const override { return new OpenSslException(*this); }
};

} // namespace brask
