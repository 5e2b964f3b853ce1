#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace backup_restore_helper {

/// The one-line reason for which the helper gives up. It is shown to people, so it contains no part of a
/// key.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A Failure of the system, which may be over in a moment.
class SystemFailure final : public Failure {
public:
    using Failure::Failure;
};

/// Raises a SystemFailure that reads "Can't `action`: " and the text of the current errno.
[[noreturn]] inline void failSystemCall(const std::string& action) {
    const int code = errno;
    throw SystemFailure("Can't " + action + ": " + std::strerror(code));
}

} // namespace backup_restore_helper
