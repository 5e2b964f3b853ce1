#include "commons/crypto/openssl.h"
#include "tests/support/support.h"

#include <openssl/err.h>

namespace {

using namespace test_support;

TEST(OpenSslException, TellsTheWholeQueueOldestFirstAndEmptiesIt) {
    ERR_raise(ERR_LIB_RSA, 101);
    ERR_raise(ERR_LIB_PEM, 102);
    const std::source_location here = std::source_location::current();
    EXPECT_THAT(OpenSslException(here, "Unable").what(),
                MatchesRegex("Unable: OpenSSL error: error:.*rsa routines.*\nerror:.*PEM routines.*"));
    EXPECT_STREQ(OpenSslException(here, "Unable").what(), "Unable: OpenSSL error: ");
}

TEST(HexText, IsWrittenWithColonsAndReadBack) {
    EXPECT_EQ(HexEncode("\xAB\x01\xFF"), "AB:01:FF");
    EXPECT_EQ(HexDecode("AB:01:FF"), "\xAB\x01\xFF");
    EXPECT_THROW(HexDecode("0x"), OpenSslException);
}

} // namespace
