#include "commons/log/log_facade.h"
#include "tests/commons/library_test.h"

#include <boost/exception/all.hpp>

namespace {

using namespace test_support;

using LogTest = LibraryTest;

TEST_F(LogTest, FiltersByTheLevelAndNeverFailsOverAText) {
    GetLogFacade()->LogIfEnabled(4, false, Error<&NoParentNode>());
    GetLogFacade()->LogIfEnabled(3, false, Error<&NoParentNode>());
    logMessage(2, "{} of {}", 1, "x");
    logMessage(2, "{} of {}", 1);
    GetLogFacade()->SetLevel(level::kInfo);
    logNote("a note of progress");
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("NoParentNode "), "1 of x", HasSubstr(": {} of {}")));
}

TEST(LogLevel, HasASeverityAndTheOtherWayRound) {
    const int severities[] = {40, 30, 20, 20};
    for (int level = 0; level < 4; ++level) {
        EXPECT_EQ(severityOfLevel(level), severities[level]);
        EXPECT_EQ(levelOfSeverity(severities[level]), std::min(level, 2));
    }
    EXPECT_EQ(levelOfSeverity(10), 3);
}

TEST_F(LogTest, AGuardedCallLogsEveryKindOfFailureAndSwallowsIt) {
    struct BoostOnly : virtual boost::exception {};

    callNoThrow([] { BRASK_THROW_AS(NoParentNode, ExFatal); }, "step");
    callNoThrow([] { throw std::runtime_error("plain"); }, "step");
    callNoThrow([] { throw BoostOnly() << boost::errinfo_errno(2); }, "step");
    callNoThrow([] { throw 1; }, "step {}");
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("step: No parent"), StartsWith("NoParentNode "),
                                       "step: plain", HasSubstr("errno"), "step {}"));
}

} // namespace
