#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/utils.h"
#include "tests/support/support.h"

#include <openssl/evp.h>

namespace {

using namespace test_support;

TEST(Base64, DecodesWhatItCan) {
    const std::pair<std::string, std::string> cases[] = {
        {"QUJD\n R\tA=\r=", "ABCD"},        // white space vanishes
        {std::string("Q*U\0JD", 6), "ABC"}, // and so does what is outside the alphabet
        {"QUJDRA==QUJD", "ABCD"},           // padding ends the text
        {"QUI=", "AB"},
        {"QUJDRA", "ABC"},              // an unfinished group is dropped
        {"====", std::string(1, '\0')}, // a group of padding is one byte
        {"/+==", "\xFF"},               // only whole bytes are kept
    };
    for (const auto& [text, bytes] : cases) {
        int length = -1;
        const MallocPtr<unsigned char> decoded(
            base64Decode(text.data(), static_cast<int>(text.size()), &length));
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(decoded.get()), length), bytes) << text;
    }
}

TEST(Rsa, VerifiesWhatOpensslSignedWithAPublicKeyOfEitherForm) {
    const auto [privateKey, publicKey] = generateServerKeypair();
    const TempDir dir;
    const std::string key = dir.write("key", privateKey);
    const auto openssl = [](const std::string& arguments) {
        return runProgram({"/bin/sh", "-c", "openssl " + arguments + " 2>&-"}).out;
    };
    const std::string signature = openssl("dgst -sha1 -sign " + key + " | openssl base64");
    Digest other;
    other.update("x", 1);
    for (const std::string& form :
         {publicKey, openssl("rsa -pubout -in " + key), "\ncomment\n" + publicKey}) {
        EXPECT_EQ(verifySignature(Digest(), signature, form), 1) << form;
        EXPECT_EQ(verifySignature(other, signature, form), 0) << form;
    }
    EXPECT_EQ(verifySignature(Digest(), signature, generateServerKeypair().second), 0);
}

TEST(Rsa, UnusableKeysAndTextsAreNamed) {
    const auto [privateKey, publicKey] = generateServerKeypair();
    const std::string nul(1, '\0');
    EXPECT_NO_THROW(countSignature(Digest(), privateKey + nul + "junk"));
    const auto encrypted =
        runProgram({"/usr/bin/openssl", "pkcs8", "-topk8", "-passout", "pass:x"}, {}, privateKey);
    for (const std::string& key : {std::string(), publicKey, nul + privateKey, encrypted.out}) {
        const auto sign = [&] { countSignature(Digest(), key); };
        testing::internal::CaptureStderr();
        EXPECT_EQ(thrownText<Error<&SignError>>(sign), "Can't initialize RSA private key");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "a person is asked";
    }
    std::string part;
    const auto compose = [&] { composePublickey("junk", part, part); };
    EXPECT_EQ(thrownText<Error<&SignError>>(compose), "Cannot read public key");
    const auto verify = [] { verifySignature(Digest(), "QUJD", "junk"); };
    EXPECT_EQ(thrownText<Error<&VerifyError>>(verify), "Cannot create RSA public key instance");
}

TEST(Digest, FailureCarriesTheReasonOfOpenssl) {
    // A property that no provider here has: OpenSSL finds no SHA-1 then.
    ASSERT_EQ(EVP_set_default_properties(nullptr, "provider=none"), 1);
    EXPECT_THAT(thrownText<Error<&DigestCalculationError>>([] { const Digest digest; }),
                HasSubstr("Cannot set up digest type: error:"));
    EVP_set_default_properties(nullptr, "");
}

} // namespace
