#include "commons/text/text_utils.h"
#include "tests/support/support.h"

#include <regex>

namespace {

using namespace test_support;

TEST(TextUtils, BytesAreMadeUtf8) {
    EXPECT_EQ(SanitizeUtf8("\xC3\xA9\xFF\xFEz\xF0\x9F\x98\x80"), "\xC3\xA9??z\xF0\x9F\x98\x80");
    EXPECT_EQ(SanitizeUtf8("\xC3("), "?(");
    EXPECT_EQ(SanitizeUtf8("end\xE2\x82"), "end");
}

TEST(TextUtils, AnEscapedTextMatchesNothingButItself) {
    for (char c = ' '; c <= '~'; ++c) {
        const std::string text{'a', c, 'b'};
        const std::regex pattern(escapeRegex(text));
        EXPECT_TRUE(std::regex_match(text, pattern)) << text;
        for (const std::string other : {"ab", "aab", "axb", "b", "a"}) {
            EXPECT_EQ(std::regex_match(other, pattern), other == text) << text;
        }
    }
    EXPECT_EQ(escapeRegex("=!<>:#-/@"), R"(\=\!\<\>\:\#\-/@)") << "for patterns where these have a meaning";
}

TEST(TextUtils, ALongTextIsCut) {
    const std::string lines(29, '\n');
    EXPECT_EQ(truncateLines("a\r\nb\rc\n"), "a\n\nb\nc\n");
    EXPECT_EQ(truncateLines(lines), lines);
    EXPECT_EQ(truncateLines(std::string(40, '\n')), lines + "\n... (truncated)");
}

TEST(TextUtils, ACompressionMethodKnowsFiveLevels) {
    std::string known;
    for (const int method : {0, 1}) {
        for (unsigned level = 0; level <= 4; ++level) {
            known += std::to_string(compressionLevelFor(method, level)) + " ";
        }
        EXPECT_THROW(compressionLevelFor(method, 5), std::runtime_error);
        EXPECT_THROW(compressionLevelFor(3 * method - 1, 0), std::runtime_error);
    }
    EXPECT_EQ(known, "0 3 5 7 9 0 3 5 11 19 ");
}

TEST(TextUtils, TimesAreLocalAndPasswordsHaveEveryClass) {
    const ScopedEnv zone("TZ", "XYZ-5:30");
    tzset();
    EXPECT_EQ(formatTimestamp(std::chrono::system_clock::from_time_t(1709231399)), "20240229T235959");
    EXPECT_NE(randomName(), randomName());
    const std::string password = randomPassword(4);
    std::string firsts;
    while (firsts.size() < 100) {
        firsts += randomPassword(4)[0];
    }
    EXPECT_NE(firsts.find_first_not_of("0123456789"), std::string::npos)
        << "the classes come in random order";
    for (const char* set : {"[0-9]", "[A-Z]", "[a-z]", R"([~!@#$;%^&()\-_+=,.{}[\]])"}) {
        EXPECT_TRUE(std::regex_search(password, std::regex(set))) << password << " lacks " << set;
    }
}

} // namespace
