#include "tests/end_to_end/tool_fixture.h"

namespace {

using namespace end_to_end;
using namespace test_support;

constexpr const char* kHelp =
    "--generate          Generate certificate to backup sign and verification\n\n"
    "--get-certificate   Get certificate used for backup sign and verification\n\n"
    "--sign-dump=arg     Get sign of specified dump file (use space separated path list for multivolume "
    "archive)\n\n"
    "--verify-dump=arg   Verify sign of specified dump file (use space separated path list for multivolume "
    "archive)\n\n"
    "--sign=arg          Deprecated. Sign specified XML file\n\n"
    "--verify=arg        Deprecated. Verify sign of specified XML file\n\n"
    "--help              Display this help page\n\n"
    "--session-path=arg  Session path\n\n"
    "--verbose           Log verbose\n\n"
    "--debug             Log debug\n\n";

class CommandLineTest : public ToolTest {};

TEST_F(CommandLineTest, HelpSucceedsWithoutACommandAndFailsWhenAskedFor) {
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 0}, {{"--verbose"}, 0}, {{"stray", "words"}, 0}, {{"--help"}, 1}, {{"--generate", "--help"}, 1}};
    for (const auto& [arguments, status] : cases) {
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.out + outcome.err, kHelp);
        EXPECT_EQ(outcome.status, status);
    }
    EXPECT_FALSE(std::filesystem::exists(productPath("admin/htdocs/bu_pubkey.txt")))
        << "no command may have run";
}

TEST_F(CommandLineTest, ParserErrorsAreOneLineWithAPrefix) {
    const std::vector<std::string> cases[] = {{"--no-such-option"},           {"--sign-dump"},      {"sign"},
                                              {"--sign", "a", "--sign", "b"}, {"--generate=value"}, {"-x"}};
    for (const auto& arguments : cases) {
        const Outcome outcome = tool(arguments);
        EXPECT_THAT(outcome.out, MatchesRegex("Error: [^\n]*\n"));
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(CommandLineTest, TheFirstCommandOfTheTableRunsAndOnlyThat) {
    const std::string file = dir.write("dump", "content");
    expectSilentSuccess({"--sign-dump", file, "--generate"});
    EXPECT_EQ(readFile(file), "content");
    EXPECT_TRUE(std::filesystem::exists(productPath("admin/htdocs/bu_pubkey.txt")));
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
    EXPECT_FALSE(std::filesystem::exists(session));
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
    EXPECT_EQ(shell("\"$1\" sign \"$2\" >/dev/full && echo kept silent", {BACKUP_SIGN_PROGRAM, file}),
              "kept silent\n");

    const std::string envelope = dir.write(
        "e.xml",
        "<e:Envelope xmlns:e='urn:envelope'><e:Data><e:migration-dump xmlns:k='urn:k' xmlns:e='urn:envelope' "
        "a='\xc3\xa4'><x/></e:migration-dump></e:Data></e:Envelope>");
    EXPECT_EQ(tool({"verify", envelope}).out, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<migration-dump "
                                              "xmlns:k=\"urn:k\" a=\"\xc3\xa4\"><x/></migration-dump>\n");
    EXPECT_EQ(tool({"verify", dir.write("o.xml", "<other/>")}).out,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<other/>\n");
    const std::string catalog =
        dir.write("catalog", "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
                             "<uri name='-' uri='" +
                                 envelope + "'/></catalog>");
    EXPECT_EQ(tool({"verify", "-"}, {{"XML_CATALOG_FILES", catalog}}, "<other/>").out,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<other/>\n");
    expectFailure({"verify", dir.path("missing.xml")},
                  "The XML file does not exist or is not a regular file. Check the file '" +
                      dir.path("missing.xml") + "'");
    EXPECT_EQ(shell("\"$1\" verify \"$2\" 2>&1 >/dev/full || echo failed", {BACKUP_SIGN_PROGRAM, envelope}),
              "failed\n");
    EXPECT_FALSE(std::filesystem::exists(productPath("admin/htdocs/bu_pubkey.txt"))) << "no key is needed";
}

} // namespace
