#include "backup_sign_lib/digest.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>

namespace {

using namespace brask;

std::string hexValue(const Digest& digest) {
    std::string text;
    for (size_t i = 0; i < digest.getSize(); ++i) {
        text += fmtlib::format("{:02x}", digest.getValue()[i]);
    }
    return text;
}

TEST(Digest, IsTheSha1OfAllThatWasAdded) {
    EXPECT_EQ(hexValue(Digest()), "da39a3ee5e6b4b0d3255bfef95601890afd80709");

    Digest digest;
    digest.update("ab", 2);
    digest.update("", 0);
    digest.update("c", 1);
    EXPECT_EQ(hexValue(digest), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(digest.getValue(), digest.getValue());
}

TEST(Digest, FailureCarriesTheReasonOfOpenssl) {
    // A property that no provider here has: OpenSSL finds no SHA-1 then.
    ASSERT_EQ(EVP_set_default_properties(nullptr, "provider=none"), 1);
    EXPECT_THAT(test_support::thrownText<Error<&DigestCalculationError>>([] { const Digest digest; }),
                testing::MatchesRegex("Cannot set up digest type: error:.*unsupported.*\n"));
    EVP_set_default_properties(nullptr, "");
}

} // namespace
