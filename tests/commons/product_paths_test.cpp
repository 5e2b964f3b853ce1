#include "commons/product_paths.h"
#include "tests/commons/library_test.h"

namespace {

using namespace brask;

TEST(ProductPaths, HaveOneSlashAtEachJointExceptWhereTheyAreConcatenated) {
    const char* const cases[][3] = {{"/a/", "/b", "/a/b"}, {"a", "b", "a/b"}, {"", "b", "b"}, {"a", "", "a"}};
    for (const auto& [a, b, joined] : cases) {
        EXPECT_EQ(joinPath(a, b), joined);
    }
    const test_support::FixedParams params(test_support::FixedParams::Values{{"PRODUCT_ROOT_D", "/p/"}});
    EXPECT_EQ(getBmmConfigFile(), "/p/BMM/log4cpp.properties");
    EXPECT_EQ(getLibxmlProxyPath(), "/p//admin/sbin/libxml-proxy");
}

TEST(ParamFromBSAStrategy, KnowsTheAccountAndTheTableAndNothingElse) {
    const ParamFromBSAStrategy source;
    EXPECT_EQ(source.getParam("BSAADM"), "bsaadm");
    EXPECT_EQ(source.getParam("_MIN_POSSIBLE_BSA_CONF_VAR_NAME"), "_MIN_POSSIBLE_BSA_CONF_VAR_VALUE");
    EXPECT_THROW(source.getParam("UNKNOWN"), Error<&ParamError>);
}

} // namespace
