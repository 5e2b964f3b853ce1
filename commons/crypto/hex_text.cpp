#include "commons/crypto/hex_text.h"

#include "commons/crypto/openssl.h"

#include <openssl/crypto.h>

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
