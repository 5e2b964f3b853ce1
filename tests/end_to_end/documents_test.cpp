#include "tests/end_to_end/tool_fixture.h"

#include <regex>

namespace {

using namespace end_to_end;

/// The commands of a document: its fenced blocks of shell, one after another.
std::string commandsOf(const std::string& document) {
    return shell("awk '/^```/ {code = $0 == \"```sh\"; next} code' " SOURCE_FOLDER "/docs/" + document);
}

class DocumentsTest : public ToolTest {
protected:
    DocumentsTest() {
        for (const char* volume : {"dump.1", "dump.2", "dump.3"}) {
            dir.write(volume, volume + std::string(5000, '\n'));
        }
        expectSilentSuccess({"--sign-dump", dir.path("dump.1"), dir.path("dump.2"), dir.path("dump.3")});
        fs::copy(productPath("admin/htdocs/bu_pubkey.txt"), dir.path("bu_pubkey.txt"));
    }
};

TEST_F(DocumentsTest, TheStepsWithStockToolsVerifyADumpAndGiveItBack) {
    const std::string out = shell("cd \"$1\"\n" + commandsOf("signed-dump.md"), {dir.path("")});
    EXPECT_THAT(out, MatchesRegex("([^\n]{28}\n){2}Verified OK\n"));
    EXPECT_EQ(readFile(dir.path("dump.3")), "dump.3" + std::string(5000, '\n'));
    EXPECT_EQ(readFile(dir.path("dump.3.unsigned")), readFile(dir.path("dump.3")));
}

TEST_F(DocumentsTest, VerifyIndependentlySaysWhatTheToolSays) {
    EXPECT_EQ(shell(R"sh(exec 2>/dev/null; cd "$1"; script=$2; verify() { "$script" -k "$@" || echo "$?"; }
        openssl rsa -RSAPublicKey_in -in bu_pubkey.txt -pubout -out spki
        openssl genrsa 1024 | openssl rsa -pubout -out other
        echo '<Signature xmlns=""/>' >bare
        verify bu_pubkey.txt dump.1 dump.2 dump.3
        verify spki dump.1 dump.2 dump.3
        verify bu_pubkey.txt dump.2 dump.1 dump.3
        verify bu_pubkey.txt dump.1
        verify other dump.1 dump.2 dump.3
        verify bu_pubkey.txt bare
        verify dump.1 dump.1 dump.2 dump.3
        verify bu_pubkey.txt dump.1 absent
        printf '\0x' >>dump.3
        verify bu_pubkey.txt dump.1 dump.2 dump.3)sh",
                    {dir.path(), SOURCE_FOLDER "/scripts/verify-independently"}),
              "intact\nintact\nDigest is wrong\n1\nDump is not signed\n1\nSignature is wrong\n1\n"
              "Unable to parse the signature\n1\n2\n2\nUnable to parse the signature\n1\n");
}

TEST_F(DocumentsTest, TheCommandsOfAnAdministratorRun) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root may give profile.log to the panel's group";
    }
    std::string commands = commandsOf("operations.md");
    const std::pair<const char*, const char*> places[] = {
        {"/opt/bsa", "$ROOT"},
        {"/usr/local/sbin", "bin"},
        {"/usr/share/doc/backup-sign/examples", SOURCE_FOLDER "/packaging/examples"},
    };
    for (const auto& [server, test] : places) {
        commands = std::regex_replace(commands, std::regex(server), test);
    }
    const std::string out = shell("cd \"$1\"; ROOT=$1/product; mkdir bin; PATH=$PWD/bin:$PATH\n"
                                  "ln -s \"$2\" \"$3\" $ROOT/admin/bin/backup_restore_helper bin\n" +
                                      commands,
                                  {dir.path(), BACKUP_SIGN_PROGRAM, DUMPSIG_PROGRAM});
    EXPECT_THAT(out, MatchesRegex("(SHA256:[^ ]+) [^ ]*/bu_pubkey.txt\n"
                                  "([^ ]+ SHA256:[^ ]+ current pair.pem\n)"
                                  "([^ ]+ SHA256:[^ ]+ archived pair.pem.[0-9TZ.]+\n)"
                                  "intact\nsigned with SHA256:[^ ]+ old.pub\n"
                                  "backup_sign --session-path=[^\n]+\n"
                                  "intact\tSHA256:[^\t]+\t[0-9.e-]+\t\n"));
    // Moving the server has brought the first pair back.
    EXPECT_THAT(out, HasSubstr("intact\t" + out.substr(0, out.find(' ')) + "\t"));
}

TEST_F(DocumentsTest, TheManualsAndTheCompletionKnowEveryOption) {
    EXPECT_EQ(shell(R"sh(cd "$1"
        for page in "$2" product/admin/bin/backup_restore_helper; do
            { $page --help || true; } | grep -oE '^ *--[a-z-]+' | tr -d ' ' | sort >options
            page=$3/man/${page##*/}.8
            sed -n 's/^\.It Fl \(Fl \|\\-\)\([a-z-]*\).*/--\2/p' "$page" | sort | diff options -
            mandoc -T lint -W warning "$page"
        done
        bash -c '. "$0"
            complete_line() { COMP_WORDS=(backup_sign "$@"); COMP_CWORD=$#; _backup_sign 2>/dev/null; echo "${COMPREPLY[*]}"; }
            complete_line --
            complete_line --g
            complete_line --session-path = prod
            complete_line --sign-dump ./dump.1 ./bu' "$3/completion/backup_sign.bash")sh",
                    {dir.path(), BACKUP_SIGN_PROGRAM, SOURCE_FOLDER}),
              "--sign-dump --verify-dump --help --session-path= --verbose --debug\n"
              "--generate --get-certificate\nproduct\n./bu_pubkey.txt\n");
}

} // namespace
