#include "backup_sign/command_guard.h"
#include "tests/support/child.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"

#include <boost/throw_exception.hpp>
#include <gmock/gmock.h>

namespace {

TEST(CommandGuard, AFailureOfBoostsIsLoggedInFullAndReportsNoExitCode) {
    const test_support::TempDir dir;
    const test_support::FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}}};
    dir.write("BMM/log4cpp.properties", test_support::readFile(PRODUCT_SOURCES "/BMM/log4cpp.properties"));
    // log4cpp is configured once in a process.
    const auto child = test_support::inChild([&] {
        char* argv[] = {const_cast<char*>("tool"), nullptr};
        RunLifetime run(1, argv, {.sessionPath = dir.path("session")});
        runGuarded(run, [] { boost::throw_exception(std::runtime_error("gone")); });
    });
    EXPECT_EQ(child.exitCode, 99) << "the exception passes";
    EXPECT_EQ(child.out + child.err, "gone");
    EXPECT_THAT(test_support::readFile(dir.path("session/migration.log")),
                testing::AllOf(testing::HasSubstr("Throw location"), testing::HasSubstr("what: gone"),
                               testing::EndsWith(" finished.  (exit code is not reported)\n")));
}

} // namespace
