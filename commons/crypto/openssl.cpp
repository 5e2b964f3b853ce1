#include "commons/crypto/openssl.h"

#include <boost/algorithm/string/join.hpp>
#include <openssl/crypto.h>
#include <openssl/err.h>

namespace brask {

void setUpOpenSsl() {
    constexpr auto kOptions =
        OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ADD_ALL_CIPHERS | OPENSSL_INIT_NO_ADD_ALL_DIGESTS;
    if (OPENSSL_init_crypto(kOptions, nullptr) != 1) {
        throw OpenSslException(std::source_location::current(), "Unable to set OpenSSL up");
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
