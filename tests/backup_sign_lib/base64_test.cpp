#include "backup_sign_lib/base64.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

namespace {

using namespace brask;

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
        {"QU\xC3\xA4JD", "ABC"},            // bytes above 127 included
        {"QUJDRA==QUJD", "ABCD"},           // padding ends the text
        {"QUJDRA", "ABC"},                  // an unfinished group is dropped
        {"====", std::string(1, '\0')},     // a group of padding is one byte
        {"/+==", "\xFF"},                   // only whole bytes are kept
    };
    for (const auto& [text, bytes] : cases) {
        EXPECT_EQ(decode(text), bytes) << text;
    }
}

} // namespace
