#include "commons/errors/system_error.h"

#include <cstring>
#include <system_error>

namespace brask {

const char* SystemError::what() const noexcept {
    if (cached.empty()) {
        const std::string message = std::runtime_error::what();
        cached = message.empty() ? std::strerror(code) : message + ": " + std::strerror(code);
    }
    return cached.c_str();
}

void throwSystemError(const std::string& message, int code) {
    switch (code) {
    case EPERM:
        throw ExSystemError<EPERM>(message);
    case ENOENT:
        throw ExSystemError<ENOENT>(message);
    case EINTR:
        throw ExSystemError<EINTR>(message);
    case ECHILD:
        throw ExSystemError<ECHILD>(message);
    case EAGAIN:
        throw ExSystemError<EAGAIN>(message);
    default:
        throw SystemError(message, code);
    }
}

void throwErrno(const std::string& message, int code) {
    throw std::system_error(code, std::generic_category(), message);
}

} // namespace brask
