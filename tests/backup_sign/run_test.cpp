#include "backup_sign/run_lifetime.h"
#include "tests/support/fixed_params.h"
#include "tests/support/support.h"

#include <boost/throw_exception.hpp>
#include <libxml/parser.h>

namespace {

using namespace test_support;

TEST(Run, LogsAFailureOfBoostsInFullWithoutAnExitCodeAndKeepsDocumentsFromLoadingOthers) {
    const TempDir dir;
    const FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}}};
    dir.write("BMM/log4cpp.properties", readFile(SOURCE_FOLDER "/product/BMM/log4cpp.properties"));
    // log4cpp is configured once in a process.
    const auto child = inChild([&] {
        const auto stockLoader = xmlGetExternalEntityLoader();
        char* argv[] = {const_cast<char*>("tool"), nullptr};
        RunLifetime run(1, argv, {.sessionPath = dir.path("session")});
        printf(xmlGetExternalEntityLoader() == stockLoader ? "others are loaded " : "");
        runGuarded(run, [] { boost::throw_exception(std::runtime_error("gone")); });
    });
    EXPECT_EQ(child.status, 99) << "the exception passes";
    EXPECT_EQ(child.out + child.err, "gone");
    EXPECT_THAT(readFile(dir.path("session/migration.log")),
                testing::AllOf(HasSubstr("Throw location"), HasSubstr("what: gone"),
                               EndsWith(" finished.  (exit code is not reported)\n")));
}

} // namespace
