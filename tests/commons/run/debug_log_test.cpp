#include "commons/files/file_utils.h"
#include "commons/run/debug_log.h"
#include "commons/session.h"
#include "tests/commons/library_test.h"

#include <log4cpp/Configurator.hh>

namespace {

using namespace brask;
using namespace test_support;
using testing::MatchesRegex;

/// log4cpp is configured once in a process, so each run under a debug log has a child process of its own.
class DebugLogTest : public testing::Test {
protected:
    void configure(const std::string& text) const { dir.write("BMM/log4cpp.properties", text); }

    static void writeUnder(bool verbose, bool debug) {
        const DebugLogLifetimeController log(verbose, debug);
        GetLogFacade()->Write(0, false, "went wrong", nullptr);
        logMessage(4, "a note");
        printf("%d%d ", GetLogFacade()->GetLevel(), currentDebugLog->IsVerbose());
    }

    TempDir dir;
    const FixedParams params{FixedParams::Values{{"PRODUCT_ROOT_D", dir.path()}}};
    const SessionLifetimeController controller{dir.path("session #1")};
    const std::string shipped = readFile(PRODUCT_SOURCES "/BMM/log4cpp.properties");
};

TEST_F(DebugLogTest, TheOptionsReachTheFlagsTheLevelAndStandardError) {
    configure(shipped);
    const auto verbose = inChild([] { writeUnder(true, false); });
    EXPECT_EQ(verbose.out + verbose.err, "31 ");
    EXPECT_THAT(readFile(session->getLogFile()),
                MatchesRegex("[0-9-]+ [0-9:.]+ .* ERROR  went wrong\n.*a note\n"));
    const auto debug = inChild([] { writeUnder(true, true); });
    EXPECT_EQ(debug.out, "40 ");
    EXPECT_THAT(debug.err, MatchesRegex("\x1b\\[31m.* went wrong\n\x1b\\[0;39m\x1b\\[37m.*a note\n.*"));
}

TEST_F(DebugLogTest, AFailureLeavesNoLogAndASecondLogHasNoTarget) {
    const auto outcome = inChild([&] {
        configure("rootCategory=INFO,NONE\n");
        thrownText<log4cpp::ConfigureFailure>([] { writeUnder(false, true); });
        printf(GetLogFacade() == nullptr && currentDebugLog == nullptr ? "nothing " : "something ");
        configure("category.p=ERROR\n" + shipped);
        writeUnder(false, false);
        writeUnder(false, true);
    });
    EXPECT_EQ(outcome.out + outcome.err, "nothing 30 40 ");
    EXPECT_THAT(readFile(session->getLogFile()), MatchesRegex("[^\n]* ERROR  went wrong\n"));
}

TEST(DebugLog, NeedsASession) {
    EXPECT_THROW(DebugLogLifetimeController(false, false), Error<&AssertionFailed>);
}

using Session = RootTest;

TEST_F(Session, ANewDirectoryAndItsParentsBelongToTheAdministrators) {
    EXPECT_EQ(SessionFiles(dir.path("a/b/")).getTaskStoppedFile(), dir.path("a/b/task_stopped"));
    EXPECT_EQ(statFile(dir.path("a")).st_gid, 54330U);
    EXPECT_THROW(SessionFiles(dir.path(std::string(5000, 'x'))), std::filesystem::filesystem_error);
}

} // namespace
