#include "commons/product_paths.h"
#include "tests/support/fixed_params.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

TEST(JoinPath, PutsOneSlashAtTheJoint) {
    const struct {
        const char *a, *b, *joined;
    } cases[] = {{"/a/", "/b", "/a/b"}, {"/a", "b", "/a/b"},
                 {"/a/", "b", "/a/b"},  {"/a", "/b", "/a/b"},
                 {"", "b", "b"},        {"a", "", "a"},
                 {"", "", ""},          {"/a//", "//b", "/a///b"},
                 {"/", "b", "/b"},      {"a//c", "d//e", "a//c/d//e"}};

    for (const auto& c : cases) {
        EXPECT_EQ(joinPath(c.a, c.b), c.joined) << c.a << " + " << c.b;
    }
}

TEST(ProductPaths, LieWhereTheProductKeepsThem) {
    const test_support::FixedParams params(test_support::FixedParams::Values{{"PRODUCT_ROOT_D", "/p"}});
    const std::pair<std::string, std::string> cases[] = {
        {getBmmConfigFile(), "/p/BMM/log4cpp.properties"},
        {getQaStatusFile(), "/p/BMM/qa-status-test.cfg"},
        {getBmmTmpDir(), "/p/BMM/tmp"},
        {getAdminBinPath("backup_restore_helper"), "/p/admin/bin/backup_restore_helper"},
        {getAdminBinPath(""), "/p/admin/bin/"},
        {getAdminConfDir(), "/p/admin/conf"},
        {getTestMetaFile(), "/p/var/test-meta.json"},
        {getLibxmlProxyPath(), "/p/admin/sbin/libxml-proxy"},
        {getAdminSbinPath("x"), "/p/admin/sbin/x"},
        {getApiCliScript("x"), "/p/admin/plib/api-cli/x.php"},
        {getBackupScript("x"), "/p/admin/plib/backup/x.php"},
        {getModuleVarPath("m"), "/p/var/modules/m"},
        {getCustomizationsFile(), "/p/admin/conf/customizations.conf"},
        {getEngineRunCommand().at(0), "/p/bin/kw-engine-braskrun"},
        {getVhostSubPath("d", "/base/"), "/base/d"},
        {getSubPath("/a/", "/b"), "/a///b"},
        {getDumpingStatusFile("/d"), "/d/dumping-status.xml"},
        {getApacheRestartLock(), "/run/lock/files/brask_restart_apache.lock"},
    };
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(path, expected);
    }
}

TEST(ProductPaths, ShowASlashAtTheEndOfTheRootOnlyWhereTheyAreConcatenated) {
    const test_support::FixedParams params(test_support::FixedParams::Values{{"PRODUCT_ROOT_D", "/p/"}});
    EXPECT_EQ(getBmmDir(), "/p/BMM");
    EXPECT_EQ(getLibxmlProxyPath(), "/p//admin/sbin/libxml-proxy");
}

TEST(ProductPaths, PassOnThatThereIsNoRoot) {
    const test_support::FixedParams params(test_support::FixedParams::Values{});
    EXPECT_THROW(getBmmDir(), Error<&ParamError>);
}

} // namespace
