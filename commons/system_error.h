#pragma once

// Failures that carry a code from below the program: an errno value, or the OpenSSL error queue.

#include "commons/error.h"

#include <cerrno>
#include <source_location>
#include <stdexcept>
#include <string>
#include <vector>

namespace brask {

/// A failed system call. Not a member of the IExTraceable family.
class SystemError : public std::runtime_error {
public:
    /// `message` may be empty. `code` is an errno value.
    SystemError(const std::string& message, int code) : std::runtime_error(message), code(code) {}

    /// The message, ": " and strerror(code), or strerror(code) alone. Formed at the first call and kept:
    /// later calls return the same pointer.
    const char* what() const noexcept override;

    const int code;

private:
    mutable std::string cached;
};

/// The codes that a handler can tell by type: EPERM, ENOENT, EINTR, ECHILD, EAGAIN.
template <int N>
class ExSystemError : public SystemError {
public:
    explicit ExSystemError(const std::string& message) : SystemError(message, N) {}
};

/// Raises ExSystemError<code> for the five codes above, SystemError for any other.
[[noreturn]] void throwSystemError(const std::string& message, int code);

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
