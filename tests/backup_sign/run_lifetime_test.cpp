#include "backup_sign/run_lifetime.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

namespace {

TEST(RunLifetime, KeepsDocumentsFromLoadingOthers) {
    const auto stockLoader = xmlGetExternalEntityLoader();
    std::string name = "backup_sign";
    char* argv[] = {name.data(), nullptr};
    const RunLifetime run(1, argv, {});
    EXPECT_NE(xmlGetExternalEntityLoader(), stockLoader);
    xmlSetExternalEntityLoader(stockLoader);
}

} // namespace
