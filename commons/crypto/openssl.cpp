#include "commons/crypto/openssl.h"

#include <boost/algorithm/string/join.hpp>
#include <openssl/crypto.h>
#include <openssl/err.h>

#include <memory>
#include <source_location>

namespace brask {

namespace {

/// Takes over a buffer that OpenSSL has allocated.
template <class T>
std::shared_ptr<T> ownOpenSslBuffer(T* buffer) {
    return {buffer, [](T* p) { OPENSSL_free(p); }};
}

} // namespace

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

std::string HexEncode(const std::string& data) {
    const auto text = ownOpenSslBuffer(OPENSSL_buf2hexstr(reinterpret_cast<const unsigned char*>(data.data()),
                                                          static_cast<long>(data.size())));
    if (!text) {
        throw OpenSslException(std::source_location::current(), "Unable to perform HEX encoding");
    }
    return text.get();
}

std::string HexDecode(const std::string& text) {
    long size = 0;
    const auto data = ownOpenSslBuffer(OPENSSL_hexstr2buf(text.c_str(), &size));
    if (!data) {
        throw OpenSslException(std::source_location::current(), "Unable to perform HEX decoding");
    }
    return {reinterpret_cast<const char*>(data.get()), static_cast<size_t>(size)};
}

} // namespace brask
