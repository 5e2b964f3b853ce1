#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/utils.h"
#include "tests/support/support.h"

#include <openssl/evp.h>

namespace {

using namespace test_support;

std::string decode(const std::string& text) {
    int length = -1;
    const MallocPtr<unsigned char> bytes(base64Decode(text.data(), static_cast<int>(text.size()), &length));
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<size_t>(length)};
}

TEST(Base64, MatchesOpensslInLinesOf71AndComesBackAtEveryLength) {
    std::vector<unsigned char> data;
    for (int length = 0; length <= 1300; ++length) {
        std::vector<unsigned char> block(2000);
        std::string expected(reinterpret_cast<char*>(block.data()),
                             EVP_EncodeBlock(block.data(), data.data(), length));
        for (size_t lineEnd = 71; lineEnd <= expected.size(); lineEnd += 72) {
            expected.insert(lineEnd, "\n");
        }
        ASSERT_EQ(MallocPtr<char>(base64Encode(data.data(), length)).get(), expected) << length;
        ASSERT_EQ(decode(expected), std::string(data.begin(), data.end())) << length;
        data.push_back(static_cast<unsigned char>(length * 167 + length / 256));
    }
}

TEST(Base64, DecodesWhatItCan) {
    const std::pair<std::string, std::string> cases[] = {
        {"QUJD\n R\tA=\r=", "ABCD"},        // white space vanishes
        {std::string("Q*U\0JD", 6), "ABC"}, // and so does what is outside the alphabet
        {"QUJDRA==QUJD", "ABCD"},           // padding ends the text
        {"QUJDRA", "ABC"},                  // an unfinished group is dropped
        {"====", std::string(1, '\0')},     // a group of padding is one byte
        {"/+==", "\xFF"},                   // only whole bytes are kept
    };
    for (const auto& [text, bytes] : cases) {
        EXPECT_EQ(decode(text), bytes) << text;
    }
}

TEST(PrivateKeyText, EveryPrivateKeyIsTakenOutAndNothingElse) {
    const auto block = [](const std::string& label) {
        return "-----BEGIN " + label + "-----\nMIIC\n-----END " + label + "-----";
    };
    const std::string others = block("RSA PUBLIC KEY") + "\n" + block("CERTIFICATE") + " -----BEGIN -----";
    EXPECT_EQ(withoutPrivateKeys(others), others);
    for (const std::string kind : {"RSA ", "", "ENCRYPTED ", "EC ", "OPENSSH "}) {
        const std::string key = block(kind + "PRIVATE KEY");
        EXPECT_EQ(withoutPrivateKeys("a\n" + key + key + "\n\n" + others),
                  "a\n[private key][private key]\n\n" + others);
        for (size_t length = key.find("MIIC"); length < key.size(); ++length) {
            EXPECT_EQ(withoutPrivateKeys(others + key.substr(0, length)), others + "[private key]") << length;
        }
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
