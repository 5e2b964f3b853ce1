#pragma once

// A failed OpenSSL call as an exception, and the error queue that it leaves.

#include "commons/errors/error.h"

#include <source_location>
#include <string>
#include <vector>

namespace brask {

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
