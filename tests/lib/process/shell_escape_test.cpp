#include "lib/process/lib/shell_escape.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

using namespace brask;

TEST(ShellEscape, EveryByteIsWrittenAsItsMarkSays) {
    const std::string escaped = "\t \"#$&'()*;<>?[\\`|~";
    ASSERT_EQ(escaped.size(), 19U);
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        std::string expected = text;
        if (byte == '\n') {
            expected = "'\n'";
        } else if (escaped.find(text) != std::string::npos) {
            expected = "\\" + text;
        }
        EXPECT_EQ(escapeForShell(text), expected) << byte;
        EXPECT_EQ(isSafeWord(text.c_str()), expected == text) << byte;
    }
    EXPECT_EQ(escapeForShell("a b\nc"), "a\\ b'\n'c");
    EXPECT_EQ(escapeForShell(""), "");
}

TEST(ShellEscape, QuotesHoldQuotes) {
    EXPECT_EQ(shellQuote("it's a \"b\""), "'it'\\''s a \"b\"'");
    EXPECT_EQ(shellQuote(""), "''");
}

TEST(ShellEscape, BackslashesGoBeforeTheBytesOfTheSet) {
    const std::unique_ptr<char, decltype(&free)> text(backslashEscape("ab", "abcab"), free);
    EXPECT_STREQ(text.get(), "\\a\\bc\\a\\b");
    EXPECT_EQ(backslashEscape(nullptr, "a"), nullptr);
    EXPECT_EQ(backslashEscape("a", nullptr), nullptr);
}

TEST(ShellEscape, UnsafeWordsAreRefused) {
    const char* word = "plain-word";
    EXPECT_NO_THROW(checkEscapeChars(&word));
    word = nullptr;
    EXPECT_NO_THROW(checkEscapeChars(&word));
    word = "two words";
    EXPECT_THROW(checkEscapeChars(&word), std::runtime_error);
}

} // namespace
