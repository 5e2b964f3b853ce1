#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/malloc_ptr.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <string>
#include <vector>

namespace {

using namespace brask;

std::string encode(const std::vector<unsigned char>& data) {
    return MallocPtr<char>(base64Encode(data.data(), static_cast<int>(data.size()))).get();
}

std::string decode(const std::string& text) {
    int length = -1;
    const MallocPtr<unsigned char> bytes(base64Decode(text.data(), static_cast<int>(text.size()), &length));
    EXPECT_EQ(bytes.get()[length], 0) << text;
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<size_t>(length)};
}

/// OpenSSL's base64 with a line feed after every 71 characters.
std::string expectedText(const std::vector<unsigned char>& data) {
    std::string plain(4 * (data.size() / 3 + 1) + 1, '\0');
    plain.resize(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(plain.data()), data.data(),
                                 static_cast<int>(data.size())));
    std::string text;
    for (size_t i = 0; i < plain.size(); ++i) {
        text += plain[i];
        if ((i + 1) % 71 == 0) {
            text += '\n';
        }
    }
    return text;
}

TEST(Base64, MatchesOpensslInLinesOf71AndComesBackAtEveryLength) {
    std::vector<unsigned char> data;
    for (int length = 0; length <= 1300; ++length) {
        ASSERT_EQ(encode(data), expectedText(data)) << length;
        ASSERT_EQ(decode(encode(data)), std::string(data.begin(), data.end())) << length;
        data.push_back(static_cast<unsigned char>(length * 167 + length / 256));
    }
}

TEST(Base64, DecodesWhatItCan) {
    const struct {
        std::string text;
        std::string bytes;
    } cases[] = {
        {"QUJD\n R\tA=\r=", "ABCD"},       // white space vanishes
        {"QUJD*RA==", "ABCD"},             // and so does what is outside the alphabet
        {std::string("QU\0JD", 5), "ABC"}, // a NUL included
        {"QU\xC3\xA4JD", "ABC"},           // and bytes above 127
        {"QUJDRA==QUJD", "ABCD"},          // padding ends the text
        {"QUJDRA", "ABC"},                 // an unfinished group is dropped
        {"====", std::string(1, '\0')},    // a group of padding is one byte
        {"/+==", "\xFF"},                  // only whole bytes are kept
        {"*-_.", ""},
        {"", ""},
    };

    for (const auto& [text, bytes] : cases) {
        EXPECT_EQ(decode(text), bytes) << text;
    }
}

} // namespace
