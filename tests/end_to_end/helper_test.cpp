#include "tests/end_to_end/tool_fixture.h"

namespace {

using namespace end_to_end;

const std::string kGet = "--get-backup-certificate\n";
const std::string kSet = "--set-backup-certificate\n";

class HelperTest : public ToolTest {
protected:
    /// How often the helper was run with each argument since the last call, as noted by noteRun().
    std::string runs() const { return shell("cat \"$1\"; rm \"$1\"", {dir.path("runs")}); }

    std::string noteRun() const { return "echo \"$*\" >>'" + dir.path("runs") + "'\n"; }
};

TEST_F(HelperTest, IsRunOnceWithNothingButThePipes) {
    replaceHelper(noteRun() + "ls -l /proc/self/fd >'" + dir.path("fds") +
                  "'; stat -c %u:%g /proc/$PPID/status >'" + dir.path("owner") +
                  "'; cat /proc/$PPID/cmdline /proc/$PPID/environ /proc/self/environ >>'" + dir.path("seen") +
                  "'; exec \"$REAL\" \"$@\"");
    const std::string file = dir.write("dump", "content");
    // An open descriptor must not reach the helper through the tool. The new key is in the tool's hands when
    // it runs the helper for the second time. What /proc shows of a process whose memory is private belongs
    // to root and root's group, whoever runs it.
    const std::string as = geteuid() == 0 ? "setpriv --regid 4711 --clear-groups " : "";
    shell("exec 7</dev/null; " + as + "\"$1\" --sign-dump \"$2\"", {BACKUP_SIGN_PROGRAM, file});
    EXPECT_EQ(runs(), kGet + kSet);
    EXPECT_EQ(readFile(dir.path("fds")).find(" 7 ->"), std::string::npos);
#ifdef NDEBUG
    EXPECT_EQ(readFile(dir.path("owner")), "0:0\n");
#endif
    const std::string pair = tool({"--get-certificate"}).out;
    EXPECT_EQ(runs(), kGet);
    const std::string keyLine = pair.substr(pair.find('\n') + 1, 64);
    EXPECT_EQ(keyLine.find_first_of("-\n"), std::string::npos) << keyLine;
    EXPECT_EQ(readFile(dir.path("seen")).find(keyLine), std::string::npos);

    shell("\"$1\" --verify-dump \"$2\"; \"$1\" --generate", {BACKUP_SIGN_PROGRAM, file});
    EXPECT_EQ(runs(), kGet + kSet);
}

TEST_F(HelperTest, APairThatWasEditedOrReplacedIsNotLost) {
    const std::string file = dir.write("dump", "content");
    expectSilentSuccess({"--sign-dump", file});
    const std::string store = productPath("var/backup_certificate");
    shell("cd \"$1\"; sed 's/$/\\r/' pair.pem >../pair; echo '# ours' >>../pair; ln -sf ../pair pair.pem",
          {store});
    expectSilentSuccess({"--verify-dump", file});

    // The tool takes what is no argument of its own for the one that it begins.
    expectSilentSuccess({"--gen"});
    expectFailure({"--verify-dump", file}, "Signature is wrong");
    shell("cd \"$1\"; ../../admin/bin/backup_restore_helper --restore-backup-certificate pair.pem.*",
          {store});
    expectSilentSuccess({"--verify-dump", file});
}

TEST_F(HelperTest, CertificateIsThePairAndThePublishedKeyItsPublicHalf) {
    expectSilentSuccess({"generate"});
    const std::string pair = tool({"--get-certificate"}).out;
    const std::string key = pair.substr(pair.find("-----BEGIN RSA PUBLIC KEY-----\n"));
    EXPECT_EQ(readFile(productPath("admin/htdocs/bu_pubkey.txt")),
              "Public key which may be used to verify dumps made from this host\n\n" + key);
    // The separator's place moves by a line feed on the way through the store.
    EXPECT_THAT(pair, EndsWith("-----END RSA PRIVATE KEY-----\n\n\n" + key));

    fs::remove_all(productPath("admin/htdocs"));
    expectFailure({"generate"}, "Unable to save certificate to " + productPath("admin/htdocs/bu_pubkey.txt"));
    EXPECT_NE(tool({"--get-certificate"}).out, pair) << "the new pair is in force all the same";
    EXPECT_EQ(shell("\"$1\" --session-path=\"$2\" --get-certificate >/dev/full && echo succeeded;"
                    "grep -o 'Unable to write .* \\[' \"$2\"/*",
                    {BACKUP_SIGN_PROGRAM, dir.path("session")}),
              "Unable to write the certificate [\n");
}

TEST_F(HelperTest, FailuresEndAsTold) {
    const std::string file = dir.write("dump", "content");

    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"echo reason; exit 1", "Unable to set backup sign certificate: reason\n.*", "get set"},
        {"cat; exit 1",
         "Unable to set backup sign certificate: \\[private key\\]\n\n\n-----BEGIN RSA PUBLIC.*", "get set"},
        {"[ \"$1\" = --set-backup-certificate ] && exec cat >/dev/null; exit 1", "", "get set"},
        {"[ \"$1\" = --set-backup-certificate ] && exec cat >/dev/null; echo nothing", "", "get set"},
        {"printf '\\n\\nkey'", "Can't initialize RSA private key\n.*", "get"},
        {"kill -9 $$", "Unable to set backup sign certificate.*", "get set"},
    };

    for (const auto& [script, out, calls] : cases) {
        SCOPED_TRACE(script);
        dir.write("product/admin/bin/backup_restore_helper", "#!/bin/sh\n" + noteRun() + script + "\n");
        const Outcome outcome = tool({"--sign-dump", file});
        EXPECT_THAT(outcome.out, MatchesRegex(out));
        EXPECT_EQ(outcome.status, out.empty() ? 0 : 1);
        EXPECT_EQ(runs(), calls == "get" ? kGet : kGet + kSet);
    }

    fs::remove(productPath("admin/bin/backup_restore_helper"));
    EXPECT_THAT(
        tool({"--sign-dump", file}).out,
        StartsWith("Unable to set backup sign certificate: backup_sign: forkExecvPipes: execv() failed: No "
                   "such file or directory\n"));
}

} // namespace
