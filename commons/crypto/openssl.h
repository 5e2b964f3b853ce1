#pragma once

// OpenSSL as a whole: how it is started, its failed calls as exceptions, and its hexadecimal text with
// colons, as fingerprints are written.

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

/// The bytes of `data` as upper-case hexadecimal digits with a colon between every two, such as "AB:01:FF".
/// Raises OpenSslException.
std::string HexEncode(const std::string& data);

/// The inverse of HexEncode; the colons may be missing. `text` ends at its first NUL. Raises OpenSslException
/// for text that is not hexadecimal.
std::string HexDecode(const std::string& text);

} // namespace brask
