#include "commons/param_source.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

TEST(ParamFromBSAStrategy, KnowsTheAccountAndTheTableAndNothingElse) {
    const ParamFromBSAStrategy source;
    EXPECT_EQ(source.getParam("BSAADM"), "bsaadm");
    EXPECT_EQ(source.getParam("_MIN_POSSIBLE_BSA_CONF_VAR_NAME"), "_MIN_POSSIBLE_BSA_CONF_VAR_VALUE");
    for (const char* unknown : {"NO_SUCH_NAME", "_MAX_POSSIBLE_BSA_CONF_VAR_NAME"}) {
        try {
            source.getParam(unknown);
            ADD_FAILURE() << unknown;
        } catch (const Error<&ParamError>& e) {
            EXPECT_EQ(e.GetText(),
                      std::string("Can't get param ") + unknown + ": bsaConfGetDefault() returned NULL");
        }
    }
}

} // namespace
