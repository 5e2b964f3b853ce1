#include "commons/call_no_throw.h"
#include "commons/locale_check.h"
#include "commons/shared_tags.h"
#include "tests/support/recording_log.h"
#include "tests/support/scoped_env.h"

#include <boost/exception/all.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

namespace {

using namespace brask;
using test_support::RecordingLog;
using test_support::ScopedEnv;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct BoostOnly : virtual boost::exception {};

TEST(CallNoThrow, LogsEveryKindOfFailureAndSwallowsIt) {
    RecordingLog log;
    callNoThrow([] {}, "step");
    EXPECT_TRUE(log.lines.empty());

    callNoThrow([] { BRASK_THROW_AS(NotEnoughSpaceAt, ExFatal, "/x", 1, 2); }, "step");
    callNoThrow([] { throw std::runtime_error("plain"); }, "step");
    callNoThrow([] { throw BoostOnly() << boost::errinfo_errno(2); }, "step");
    callNoThrow([] { throw 1; }, "step {}");
    callNoThrow(nullptr, "step");
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("step: Selected filesystem at /x has"),
                                       StartsWith("NotEnoughSpaceAt Selected filesystem at /x has"),
                                       "step: plain", AllOf(StartsWith("step: "), HasSubstr("errno")),
                                       "step {}", "step: bad_function_call"));
}

TEST(CheckLocale, MakesABrokenLocaleTheCLocaleForChildrenOnly) {
    RecordingLog log;
    const ScopedEnv all("LC_ALL", std::nullopt);
    const ScopedEnv lang("LANG", "xx_YY.broken");
    const std::string before = std::setlocale(LC_ALL, nullptr);
    checkLocale();
    EXPECT_STREQ(getenv("LC_ALL"), "C");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    EXPECT_THAT(log.lines, ElementsAre("Locale in the environment variables is invalid (LC_ALL=, "
                                       "LANG=xx_YY.broken), fall back to 'C'."));
}

TEST(CheckLocale, LeavesAValidLocaleAndTheProcessAsTheyAre) {
    RecordingLog log;
    const ScopedEnv all("LC_ALL", "C.UTF-8");
    const std::string before = std::setlocale(LC_ALL, nullptr);
    checkLocale();
    EXPECT_STREQ(getenv("LC_ALL"), "C.UTF-8");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    EXPECT_TRUE(log.lines.empty());
}

TEST(CheckLocale, IsSilentBelowTheVerboseLevel) {
    RecordingLog log(2);
    const ScopedEnv all("LC_ALL", "xx_YY.broken");
    checkLocale();
    EXPECT_STREQ(getenv("LC_ALL"), "C");
    EXPECT_TRUE(log.lines.empty());
}

} // namespace
