#include "commons/crypto/openssl_error.h"

#include <boost/algorithm/string/join.hpp>
#include <openssl/err.h>

namespace brask {

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
