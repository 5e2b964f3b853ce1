#include "commons/crypto/openssl_setup.h"

#include "commons/crypto/openssl_error.h"

#include <openssl/crypto.h>

namespace brask {

void setUpOpenSsl() {
    constexpr auto kOptions =
        OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ADD_ALL_CIPHERS | OPENSSL_INIT_NO_ADD_ALL_DIGESTS;
    if (OPENSSL_init_crypto(kOptions, nullptr) != 1) {
        throw OpenSslException(std::source_location::current(), "Unable to set OpenSSL up");
    }
}

} // namespace brask
