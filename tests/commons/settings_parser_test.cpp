#include "commons/settings_parser.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <system_error>

namespace {

using namespace brask;
using ::testing::StartsWith;

TEST(SettingsParser, ReadsEveryFormOfTheSyntax) {
    const struct {
        std::string text;
        SettingsMap expected;
    } cases[] = {
        {"", {}},
        {"\xEF\xBB\xBF", {}},
        {"a", {}},
        {"\xEF\xBB\xBF[s]\nk=v", {{"s.k", "v"}}},
        {"a = 1\n[ ]\nb = 2", {{".a", "1"}, {".b", "2"}}},
        {"[s]\nk = v ; note\n", {{"s.k", "v"}}},
        {"[s]\nk = 'a;b'\nl = a;b\n", {{"s.k", "a;b"}, {"s.l", "a"}}},
        {"[s] junk\nk = \"a\\\" junk = 2 ; x\nl=1", {{"s.k", "a\\"}, {"s.l", "1"}}},
        {"[s]\nk\nk ;= 1\n", {{"s.k ;", "1"}}},
        {"[s]\r\nk = a b\t\r\n\r\n  ; c\r\nl =\r\n", {{"s.k", "a b"}, {"s.l", ""}}},
        {"[ s t\t]\nk[x] = 1\nk[ ' y ' ]=2\nk [\"z\"] 3 = 3\nk[w][w] = 4",
         {{"s t.k.x", "1"}, {"s t.k. y ", "2"}}},
        {"[\"s]\"]\nk=1\n['t']\nk=2\n[\"s]\"]\nk=3", {{"s].k", "3"}, {"t.k", "2"}}},
        {"[s]\n#k = #1=2 \"q\"\n=x\nK=1\n", {{"s.#k", "#1=2 \"q\""}, {"s.", "x"}, {"s.K", "1"}}},
        {std::string("[s]\nk\0=\xFF\0\n", 10), {{std::string("s.k\0", 4), std::string("\xFF\0", 2)}}},
    };

    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(SettingsParser().parse(text), expected) << text;
    }
}

TEST(SettingsParser, TellsWhereAndWhatItExpected) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"a=1\n\n[sect \nb", "Parse error: Expected ']', found '<EOL>': Line 3, column 7"},
        {"\xEF\xBB\xBF[s", "Parse error: Expected ']', found '<EOF>': Line 1, column 3"},
        {"['s' x]", "Parse error: Expected ']', found 'x': Line 1, column 6"},
        {"k[x\n]=1", "Parse error: Expected ']', found '<EOL>': Line 1, column 4"},
        {"k[\"x\" \xE9]=1", "Parse error: Expected ']', found '\xE9': Line 1, column 7"},
        {"k = \"a", "Parse error: Expected '\"', found '<EOF>': Line 1, column 7"},
        {"\nk = 'a\"\n'", "Parse error: Expected ''', found '<EOL>': Line 2, column 8"},
    };

    for (const auto& [text, message] : cases) {
        try {
            SettingsParser().parse(text);
            ADD_FAILURE() << text;
        } catch (const ParseError& e) {
            EXPECT_STREQ(e.what(), message);
        }
    }
}

TEST(SettingsParser, GathersTheValuesOfSeveralInputsAlsoAfterAFailure) {
    SettingsParser parser;
    parser.parse("[s]\na=1\nb=1");
    EXPECT_THROW(parser.parse("[t]\nb=2\n[x"), ParseError);
    EXPECT_EQ(parser.parse("b=3"), (SettingsMap{{".b", "3"}, {"s.a", "1"}, {"s.b", "1"}, {"t.b", "2"}}));
}

TEST(SettingsParser, ReportsAStreamThatFails) {
    const test_support::TempDir dir;
    std::ifstream missing(dir.path("missing"));
    EXPECT_THROW(SettingsParser().parse(missing), std::system_error);

    std::ifstream directory(dir.path());
    try {
        SettingsParser().parse(directory);
        ADD_FAILURE();
    } catch (const std::system_error& e) {
        EXPECT_THAT(e.what(), StartsWith("Unable to read characters"));
    }
}

TEST(SettingsParser, TakesLinesOfAnyLength) {
    const std::string mebibytes(4 << 20, 'x');
    const SettingsMap values = SettingsParser().parse("[s]\n;" + mebibytes + "\nk=" + mebibytes);
    EXPECT_EQ(values, (SettingsMap{{"s.k", mebibytes}}));
}

TEST(SettingsParser, RendersAMapAsLines) {
    EXPECT_EQ(settingsToString({}), "");
    EXPECT_EQ(settingsToString({{"s.b", "2"}, {"s.a", ""}}), "s.a=\ns.b=2");
}

TEST(GetSetting, ConvertsToTheTypeAskedFor) {
    const SettingsMap values{{"s.n", " -12abc"}, {"s.big", "4294967296"}, {"s.t", "x y"}};
    EXPECT_EQ(getSetting<int>(values, "s", "n", 0), -12);
    EXPECT_EQ(getSetting<long>(values, "s", "n", 0), -12);
    EXPECT_EQ(getSetting<long long>(values, "s", "n", 0), -12);
    EXPECT_EQ(getSetting<unsigned long>(values, "s", "n", 0), 0UL - 12);
    EXPECT_EQ(getSetting<unsigned long long>(values, "s", "n", 0), 0ULL - 12);
    EXPECT_EQ(getSetting<unsigned long>(values, "s", "big", 0), 4294967296UL);
    EXPECT_EQ(getSetting<std::string>(values, "s", "t", ""), "x y");
    EXPECT_EQ(getSetting<unsigned>(values, "t", "n", 7), 7U);
}

template <class T>
std::string conversionError(const std::string& text) {
    try {
        getSetting<T>({{"s.k", text}}, "s", "k", T());
        return "none";
    } catch (const std::invalid_argument& e) {
        return std::string("invalid ") + e.what();
    } catch (const std::out_of_range& e) {
        return std::string("range ") + e.what();
    }
}

TEST(GetSetting, NamesTheConversionThatFailed) {
    EXPECT_EQ(conversionError<int>("x"), "invalid stoi");
    EXPECT_EQ(conversionError<int>("2147483648"), "range stoi");
    EXPECT_EQ(conversionError<long>(""), "invalid stol");
    EXPECT_EQ(conversionError<unsigned long>("99999999999999999999"), "range stoul");
    EXPECT_EQ(conversionError<long long>("-"), "invalid stoll");
    EXPECT_EQ(conversionError<unsigned long long>("x"), "invalid stoull");
    EXPECT_EQ(conversionError<unsigned>("x"), "invalid stoul");
    EXPECT_EQ(conversionError<unsigned>("4294967295"), "none");
    EXPECT_EQ(conversionError<unsigned>("4294967296"),
              "range '4294967296' is out of range of 'unsigned int' type");
}

TEST(GetSetting, ReadsAnyTextAsABool) {
    for (const char* text : {"false", "OFF", "No", "0", ""}) {
        EXPECT_FALSE(getSetting<bool>({{"s.k", text}}, "s", "k", true)) << text;
    }
    for (const char* text : {"YES", "On", "2", "00", "falsch"}) {
        EXPECT_TRUE(getSetting<bool>({{"s.k", text}}, "s", "k", false)) << text;
    }
}

} // namespace
