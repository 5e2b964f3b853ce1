#include "tests/end_to_end/tool_fixture.h"

namespace {

using namespace end_to_end;

using CommandLineTest = ToolTest;

TEST_F(CommandLineTest, HelpSucceedsWithoutACommandAndFailsWhenAskedFor) {
    const std::pair<std::string, int> cases[] = {
        {"--verbose", 0}, {"stray|words", 0}, {"--help", 1}, {"--generate|--help", 1}};
    for (const auto& [arguments, status] : cases) {
        const Outcome outcome = tool(split(arguments));
        EXPECT_EQ(outcome.out + outcome.err, readFile(SOURCE_FOLDER "/tests/data/help.txt"));
        EXPECT_EQ(outcome.status, status);
    }
    EXPECT_EQ(tool({}).status, 0);
    EXPECT_FALSE(fs::exists(productPath("admin/htdocs/bu_pubkey.txt"))) << "no command may have run";
}

TEST_F(CommandLineTest, ParserErrorsAreOneLineWithAPrefix) {
    for (const char* arguments :
         {"--no-such-option", "--sign-dump", "sign", "--sign|a|--sign|b", "--generate=value", "-x"}) {
        const Outcome outcome = tool(split(arguments));
        EXPECT_THAT(outcome.out, MatchesRegex("Error: [^\n]*\n"));
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(CommandLineTest, TheFirstCommandOfTheTableRunsAndOnlyThat) {
    const std::string file = dir.write("dump", "content");
    expectSilentSuccess({"--sign-dump", file, "--generate"});
    EXPECT_EQ(readFile(file), "content");
    EXPECT_TRUE(fs::exists(productPath("admin/htdocs/bu_pubkey.txt")));
    expectSilentSuccess({"generate", "extra"});
    expectFailure({"--verify-dump", file, "--sign", file}, "Dump is not signed");
}

TEST_F(CommandLineTest, OldFormsTakeTheFileAndDropTheRest) {
    const std::string file = dir.write("x.xml", "<a/>");
    const std::string session = dir.path("session");
    for (const std::string word : {"sign", "sign-", "sign---"}) {
        const Outcome outcome = tool({word, file, "--session-path=" + session, "--no-such-option"});
        EXPECT_EQ(outcome.out, "<a/>");
        EXPECT_EQ(outcome.status, 0);
    }
    EXPECT_FALSE(fs::exists(session));
    // The word is taken for the old command among the paths of another, too.
    EXPECT_EQ(tool({"--sign=" + file}).out, "<a/>");
    EXPECT_EQ(tool({"--sign-dump", "missing", "verify", file}).out, "File missing not found\n");
}

TEST_F(CommandLineTest, LegacySignCopiesAndVerifyUnwraps) {
    std::string binary;
    for (int i = 0; i < 100'003; ++i) {
        binary += static_cast<char>(i * 31 % 256);
    }
    const std::string file = dir.write("binary", binary);
    EXPECT_EQ(tool({"sign", file}).out, binary);
    EXPECT_EQ(tool({"sign", ""}, {}, binary).out, binary);

    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    const std::string envelope = dir.write(
        "e.xml",
        "<e:Envelope xmlns:e='urn:envelope'><e:Data><e:migration-dump xmlns:k='urn:k' xmlns:e='urn:envelope' "
        "a='\xc3\xa4'><x/></e:migration-dump></e:Data></e:Envelope>");
    const std::string catalog = dir.write(
        "catalog", "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'><uri name='-' uri='" +
                       envelope + "'/></catalog>");
    EXPECT_EQ(tool({"verify", envelope}).out,
              declaration + "<migration-dump xmlns:k=\"urn:k\" a=\"\xc3\xa4\"><x/></migration-dump>\n");
    EXPECT_EQ(tool({"verify", "-"}, {{"XML_CATALOG_FILES", catalog}}, "<other/>").out,
              declaration + "<other/>\n");
    expectFailure({"verify", dir.path()},
                  "The XML file does not exist or is not a regular file. Check the file '" + dir.path() +
                      "'");
    EXPECT_EQ(shell("\"$1\" sign \"$2\" >/dev/full && echo kept silent\n"
                    "\"$1\" verify \"$2\" 2>&1 >/dev/full || echo failed",
                    {BACKUP_SIGN_PROGRAM, envelope}),
              "kept silent\nfailed\n");
    EXPECT_FALSE(fs::exists(productPath("admin/htdocs/bu_pubkey.txt"))) << "no key is needed";
}

} // namespace
