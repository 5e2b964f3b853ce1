#include "backup_sign_lib/digest.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>
#include <openssl/evp.h>

namespace {

using namespace brask;

TEST(Digest, FailureCarriesTheReasonOfOpenssl) {
    // A property that no provider here has: OpenSSL finds no SHA-1 then.
    ASSERT_EQ(EVP_set_default_properties(nullptr, "provider=none"), 1);
    EXPECT_THAT(test_support::thrownText<Error<&DigestCalculationError>>([] { const Digest digest; }),
                testing::HasSubstr("Cannot set up digest type: error:"));
    EVP_set_default_properties(nullptr, "");
}

} // namespace
