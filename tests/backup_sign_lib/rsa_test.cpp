#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/program.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

TEST(Rsa, VerifiesWhatOpensslSignedWithAPublicKeyOfEitherForm) {
    const auto [privateKey, publicKey] = generateServerKeypair();
    const test_support::TempDir dir;
    const std::string key = dir.write("key", privateKey);
    const auto openssl = [](const std::string& arguments) {
        return test_support::runProgram({"/bin/sh", "-c", "openssl " + arguments + " 2>&-"}).out;
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
    const std::string encrypted =
        test_support::runProgram({"/usr/bin/openssl", "pkcs8", "-topk8", "-passout", "pass:x"}, {},
                                 privateKey)
            .out;
    for (const std::string& key : {std::string(), publicKey, nul + privateKey, encrypted}) {
        const auto sign = [&] { countSignature(Digest(), key); };
        testing::internal::CaptureStderr();
        EXPECT_EQ(test_support::thrownText<Error<&SignError>>(sign), "Can't initialize RSA private key");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "a person is asked";
    }
    std::string part;
    const auto compose = [&] { composePublickey("junk", part, part); };
    EXPECT_EQ(test_support::thrownText<Error<&SignError>>(compose), "Cannot read public key");
    const auto verify = [] { verifySignature(Digest(), "QUJD", "junk"); };
    EXPECT_EQ(test_support::thrownText<Error<&VerifyError>>(verify), "Cannot create RSA public key instance");
}

} // namespace
