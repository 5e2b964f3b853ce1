#include "backup_sign_lib/backup_sign.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/fixed_params.h"
#include "tests/support/recording_log.h"
#include "tests/support/support.h"

namespace {

using namespace test_support;

TEST(BackupSign, ANewPairServesTheWholeProcessAndValidityIsAskedWithoutErrors) {
    const TempDir root;
    const FixedParams params{{{"PRODUCT_ROOT_D", root.path()}}};
    const auto setHelper = [&root](const std::string& script) {
        const std::string path = root.write("admin/bin/backup_restore_helper", "#!/bin/sh\n" + script);
        fs::permissions(path, fs::perms::owner_all);
    };
    const std::string note = "echo ${1%-backup*} >>" + root.path("calls") + "\n";
    BackupSign sign;
    setHelper("exit 1");
    EXPECT_THROW(sign.LoadServerCertificate(), Error<&CertificateNotFoundError>);
    setHelper(note + "printf 'private\\n\\npublic'");
    sign.LoadServerCertificate();
    EXPECT_EQ(sign.GetCertificate(), "private\n\npublic")
        << "after a failed load the helper is asked every time";

    setHelper(note + "cat >/dev/null");
    root.write("admin/htdocs/bu_pubkey.txt", "");
    const std::vector<std::string> dump{root.write("dump", "some dump")};
    Digest digest;
    digest.update("x", 1);

    const RecordingLog log;
    EXPECT_FALSE(sign.IsDumpSignValid(dump));
    sign.SignDump(dump);
    EXPECT_TRUE(sign.IsDumpSignValid(dump));
    EXPECT_THROW(sign.IsDumpSignValid({"missing"}), Error<&FileNotFoundError>);
    EXPECT_TRUE(sign.IsSignValid(sign.SignDigest(digest), digest));
    EXPECT_FALSE(sign.IsSignValid(sign.SignDigest(digest), Digest()));
    EXPECT_THAT(log.lines, ElementsAre(HasSubstr("Failed to load backup sign certificate: Incorrect backup"),
                                       HasSubstr("Dump is not signed"), HasSubstr("Digest is wrong")));
    EXPECT_EQ(readFile(root.path("calls")), "--get\n--get\n--get\n--set\n");

    setHelper("exec <&-; exit 1");
    EXPECT_THROW(sign.GenerateSign(), Error<&SetBackupCertificateError>);
    // More than a pipe holds: a helper that reads none of it must not cost this process its life.
    EXPECT_THROW(sign.StoreServerKeypair(std::string(1 << 20, 'k'), "k"), Error<&SetBackupCertificateError>);
    EXPECT_TRUE(sign.IsDumpSignValid(dump)) << "a pair that could not be stored must not be in force";
}

} // namespace
