#include "backup_sign/run_lifetime.h"
#include "commons/run/error_report.h"
#include "tests/support/fixed_params.h"
#include "tests/support/support.h"

#include <boost/throw_exception.hpp>
#include <libxml/parser.h>

namespace {

using namespace test_support;

TEST(Run, LogsHowAnExceptionThatPassesEndsItAndKeepsDocumentsFromLoadingOthers) {
    const TempDir dir;
    const FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}}};
    dir.write("BMM/log4cpp.properties", readFile(SOURCE_FOLDER "/product/BMM/log4cpp.properties"));
    const std::pair<void (*)(), std::string> cases[] = {
        {[] { throw std::runtime_error("gone"); }, "[^\n]*\n[^\n]* finished\\. Exit code: 1\n"},
        {[] { boost::throw_exception(std::runtime_error("gone")); },
         ".*Throw location.*what: gone.* finished\\.  \\(exit code is not reported\\)\n"},
    };
    for (const auto& [command, log] : cases) {
        // log4cpp is configured once in a process.
        const auto child = inChild([&, command = command] {
            const auto stockLoader = xmlGetExternalEntityLoader();
            char* argv[] = {const_cast<char*>("tool"), nullptr};
            RunLifetime run(1, argv, {.sessionPath = dir.path("session")});
            printf("%s %d ", ErrorReportSender::instance().GetComponentName().c_str(),
                   xmlGetExternalEntityLoader() == stockLoader);
            runGuarded(run, command);
        });
        EXPECT_EQ(child.status, 99) << "the exception passes";
        EXPECT_EQ(child.out + child.err, "backup_sign 0 gone");
        EXPECT_THAT(readFile(dir.path("session/migration.log")), MatchesRegex(log));
        fs::remove(dir.path("session/migration.log"));
    }
}

} // namespace
