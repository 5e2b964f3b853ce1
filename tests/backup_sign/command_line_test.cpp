#include "backup_sign/command_line.h"

#include <gtest/gtest.h>

namespace {

using Paths = std::vector<std::string>;

CommandLine parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "backup_sign");
    return {static_cast<int>(arguments.size()), arguments.data()};
}

TEST(CommandLine, KeepsVolumesInOrderAndTheSessionPathOfAnOldForm) {
    EXPECT_EQ(parse({"--sign-dump", "a", "b", "--debug"}).values()["sign-dump"].as<Paths>(),
              (Paths{"a", "b"}));
    EXPECT_EQ(parse({}).values()["session-path"].as<std::string>(), "");

    const CommandLine old = parse({"--session-path=/x", "verify", "file", "--debug", "sign"});
    EXPECT_EQ(old.values()["session-path"].as<std::string>(), "/x");
    EXPECT_EQ(old.values()["verify"].as<std::string>(), "file");
    EXPECT_FALSE(old.has("debug"));
    EXPECT_FALSE(old.has("sign"));
}

TEST(ParseDeprecatedCommand, TrimsDashesAtTheRightEndOnlyAndEmptiesTheTokens) {
    Paths tokens{"sign--", "file", "rest"};
    const auto options = parseDeprecatedCommand(tokens);
    ASSERT_EQ(options.size(), 1U);
    EXPECT_EQ(options[0].string_key, "sign");
    EXPECT_EQ(options[0].position_key, -1);
    EXPECT_EQ(options[0].value, Paths{"file"});
    EXPECT_TRUE(options[0].original_tokens.empty());
    EXPECT_TRUE(tokens.empty());

    for (const char* other : {"--sign", "-sign-", "Sign", "signs", "generate", ""}) {
        Paths untouched{other, "file"};
        EXPECT_TRUE(parseDeprecatedCommand(untouched).empty()) << other;
        EXPECT_EQ(untouched.size(), 2U) << other;
    }
    Paths none;
    EXPECT_THROW(parseDeprecatedCommand(none), std::out_of_range);
}

TEST(ParseBareCommand, TakesTheThreeWordsExactly) {
    for (const char* word : {"generate", "sign", "verify"}) {
        EXPECT_EQ(parseBareCommand(word).first, word);
    }
    for (const char* word : {"Generate", "generate ", "get-certificate", ""}) {
        EXPECT_EQ(parseBareCommand(word).first, "") << word;
    }
}

TEST(CheckOption, NamesTheMissingOption) {
    const CommandLine line = parse({"--debug"});
    EXPECT_NO_THROW(checkOption(line.values(), "debug"));
    try {
        checkOption(line.values(), "sign");
        FAIL();
    } catch (const brask::Error<&MissingOptionError>& e) {
        EXPECT_STREQ(e.what(), "Missing option sign");
    }
}

} // namespace
