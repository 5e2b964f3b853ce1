#include "commons/system_error.h"

#include <boost/algorithm/string/join.hpp>
#include <openssl/err.h>

#include <cstring>

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

std::vector<std::string> takeOpenSslErrors() {
    std::vector<std::string> errors;
    while (const unsigned long code = ERR_get_error()) {
        errors.emplace_back(ERR_error_string(code, nullptr));
    }
    return errors;
}

OpenSslException::OpenSslException(const std::source_location& where, const std::string& message)
    : Error(where) {
    Format(message, boost::algorithm::join(takeOpenSslErrors(), "\n"));
}

} // namespace brask
