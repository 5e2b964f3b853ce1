#pragma once

// A failed system call as an exception that carries its errno value.

#include <cerrno>
#include <stdexcept>
#include <string>

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

/// Raises std::system_error with the text "MESSAGE: " and that of `code`. For the units whose callers are
/// promised the standard exception.
[[noreturn]] void throwErrno(const std::string& message, int code = errno);

} // namespace brask
