#include "backup_sign/command_line.h"
#include "tests/support/support.h"

namespace {

using namespace test_support;
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

TEST(CommandLine, TakesNothingElseForAnOldCommandAndNamesAMissingOption) {
    for (const char* word : {"Sign", "signs", "-sign-", "Generate", "generate ", "get-certificate", ""}) {
        std::vector<std::string> tokens{word, "file"};
        EXPECT_TRUE(parseDeprecatedCommand(tokens).empty()) << word;
        EXPECT_EQ(parseBareCommand(word).first, "") << word;
    }
    std::vector<std::string> none;
    EXPECT_THROW(parseDeprecatedCommand(none), std::out_of_range);
    const CommandLine line = parse({"--debug"});
    checkOption(line.values(), "debug");
    EXPECT_EQ(thrownText<brask::Error<&MissingOptionError>>([&] { checkOption(line.values(), "sign"); }),
              "Missing option sign");
}

} // namespace
