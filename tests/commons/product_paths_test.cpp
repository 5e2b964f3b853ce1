#include "commons/product_paths.h"
#include "tests/commons/library_test.h"

namespace {

using namespace brask;

TEST(JoinPath, PutsOneSlashAtTheJoint) {
    const char* const cases[][3] = {{"/a/", "/b", "/a/b"},
                                    {"/a", "b", "/a/b"},
                                    {"", "b", "b"},
                                    {"a", "", "a"},
                                    {"/a//", "//b", "/a///b"}};
    for (const auto& [a, b, joined] : cases) {
        EXPECT_EQ(joinPath(a, b), joined);
    }
}

TEST(ProductPaths, LieBelowTheRootAsItIsWritten) {
    const test_support::FixedParams params(test_support::FixedParams::Values{{"PRODUCT_ROOT_D", "/p/"}});
    EXPECT_EQ(getBmmConfigFile(), "/p/BMM/log4cpp.properties");
    EXPECT_EQ(getAdminBinPath("backup_restore_helper"), "/p/admin/bin/backup_restore_helper");
    EXPECT_EQ(getLibxmlProxyPath(), "/p//admin/sbin/libxml-proxy");
    EXPECT_EQ(getApiCliScript("x"), "/p/admin/plib/api-cli/x.php");
    EXPECT_EQ(getVhostSubPath("d", "/base/"), "/base/d");
}

TEST(ParamFromBSAStrategy, KnowsTheAccountAndTheTableAndNothingElse) {
    const ParamFromBSAStrategy source;
    EXPECT_EQ(source.getParam("BSAADM"), "bsaadm");
    EXPECT_EQ(source.getParam("_MIN_POSSIBLE_BSA_CONF_VAR_NAME"), "_MIN_POSSIBLE_BSA_CONF_VAR_VALUE");
    EXPECT_EQ(test_support::thrownText<Error<&ParamError>>([&] { source.getParam("UNKNOWN"); }),
              "Can't get param UNKNOWN: bsaConfGetDefault() returned NULL");
}

} // namespace
