#include "commons/random_text.h"
#include "commons/system_error.h"
#include "commons/text_utils.h"
#include "commons/time_utils.h"
#include "tests/support/scoped_env.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

using namespace brask;
using ::testing::StartsWith;

TEST(HexText, HasColonsAndReadsBackAnyBytes) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
    }
    EXPECT_EQ(HexEncode("\xAB\x01\xFF"), "AB:01:FF");
    EXPECT_EQ(HexEncode(""), "");
    EXPECT_EQ(HexDecode(HexEncode(bytes)), bytes);
    EXPECT_EQ(HexDecode("ab01ff"), "\xAB\x01\xFF");
}

TEST(HexText, RefusesWhatIsNotHexadecimal) {
    for (const char* text : {"0x", "ABC", "A:B"}) {
        try {
            HexDecode(text);
            ADD_FAILURE() << text;
        } catch (const OpenSslException& e) {
            EXPECT_THAT(e.what(), StartsWith("Unable to perform HEX decoding: OpenSSL error: error:"));
        }
    }
}

TEST(SanitizeUtf8, ReplacesStrayBytesAndDropsACutOffEnd) {
    const struct {
        std::string text;
        std::string expected;
    } cases[] = {
        {"", ""},
        {"a \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "a \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {std::string("a\0b", 3), std::string("a\0b", 3)},
        {"\xFF", "?"},
        {"a\xFF\xFEz\xC3\xA9", "a??z\xC3\xA9"},
        {"\xC3(", "?("},
        {"\xC0\xAF", "??"},
        {"end\xE2\x82", "end"},
        {"\xC3", ""},
    };

    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(SanitizeUtf8(text), expected) << HexEncode(text);
    }
    const std::string stray(100000, '\xFF');
    EXPECT_EQ(SanitizeUtf8(stray), std::string(stray.size(), '?'));
}

TEST(EscapeRegex, MakesAnExpressionThatMatchesTheTextAlone) {
    std::string printable;
    for (char c = ' '; c < '\x7F'; ++c) {
        printable += c;
    }
    EXPECT_TRUE(std::regex_match(printable, std::regex(escapeRegex(printable))));
    EXPECT_EQ(escapeRegex("/@ \"%&',;_`~"), "/@ \"%&',;_`~");
    EXPECT_EQ(escapeRegex(".+*?^$(){}=!<>|:#[]\\-"), R"(\.\+\*\?\^\$\(\)\{\}\=\!\<\>\|\:\#\[\]\\\-)");
}

TEST(TruncateLines, KeepsThirtyLines) {
    std::string thirty = "0";
    for (int i = 1; i < 30; ++i) {
        thirty += "\n" + std::to_string(i);
    }
    EXPECT_EQ(truncateLines(""), "");
    EXPECT_EQ(truncateLines("a\r\nb\rc\n"), "a\n\nb\nc\n");
    EXPECT_EQ(truncateLines(thirty), thirty);
    EXPECT_EQ(truncateLines(thirty + "\n"), thirty + "\n... (truncated)");
}

std::string compressionError(int method, unsigned level) {
    try {
        return std::to_string(compressionLevelFor(method, level));
    } catch (const std::runtime_error& e) {
        return e.what();
    }
}

TEST(CompressionLevel, IsThatOfTheMethod) {
    EXPECT_EQ(compressionError(0, 4), "9");
    EXPECT_EQ(compressionError(1, 2), "5");
    EXPECT_EQ(compressionError(1, 4), "19");
    EXPECT_EQ(compressionError(0, 5), "Invalid compression level: 5");
    EXPECT_EQ(compressionError(2, 9), "Invalid compression method: 2");
    EXPECT_EQ(compressionError(-1, 0), "Invalid compression method: -1");
}

TEST(Timestamp, IsInLocalTime) {
    const test_support::ScopedEnv zone("TZ", "XYZ-5:30");
    tzset();
    const auto leapDay = std::chrono::system_clock::from_time_t(1709231399); // 2024-02-29 18:29:59 UTC
    EXPECT_EQ(formatTimestamp(leapDay), "20240229T235959");
    EXPECT_EQ(toLocalTime(leapDay + std::chrono::seconds(1)).tm_mon, 2);
}

TEST(RandomText, DrawsFromItsAlphabetsAndDiffers) {
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i) {
        const std::string name = randomName();
        EXPECT_TRUE(std::regex_match(name, std::regex("[a-zA-Z0-9]{7}"))) << name;
        names.insert(name);
    }
    EXPECT_GT(names.size(), 90U);
}

TEST(RandomText, PutsEveryClassIntoAPassword) {
    for (int i = 0; i < 100; ++i) {
        const std::string password = randomPassword(4);
        EXPECT_EQ(password.size(), 4U);
        for (const char* set : {"[0-9]", "[A-Z]", "[a-z]", R"([~!@#$;%^&()\-_+=,.{}[\]])"}) {
            EXPECT_TRUE(std::regex_search(password, std::regex(set))) << password << " lacks " << set;
        }
    }
    EXPECT_EQ(randomPassword(40).size(), 40U);
    EXPECT_EQ(randomPassword(0), "");
    EXPECT_EQ(randomPassword(-1), "");
}

} // namespace
