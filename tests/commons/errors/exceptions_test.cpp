#include "commons/errors/system_error.h"
#include "commons/errors/text_formatters.h"
#include "commons/exceptions.h"
#include "tests/support/support.h"

namespace {

using namespace test_support;

BRASK_ERROR_TAG(TwoPlaceholders, "{} and {}")
BRASK_ERROR_TAG(BoostStyle, "%1% of %2%")

TEST(Error, ItsCopyTellsWhatWentWrongWhereAndWhy) {
    Error<&TwoPlaceholders> outer;
    outer.Format("{}", 2);
    EXPECT_THAT(GetErrorText(outer), HasSubstr("exceptions_test.cpp:TwoPlaceholders] \n"));
    EXPECT_EQ(GetErrorText(ExTraceableBase<ExDefault>("", "bare")), "bare");
    outer.Include(Error<&ParamError, ExFatal>().Format("x", "y"));
    EXPECT_EQ(GetErrorMessage(Error<&TwoPlaceholders>(outer)), "{} and 2: Can't get param x: y");
    EXPECT_THAT(Error<&TwoPlaceholders>().Format(1).what(), EndsWith(": {} and {}"));
    Exc<&BoostStyle> older("f", "file", 7);
    older % "a" % 3;
    EXPECT_EQ(GetErrorText(Exc<&BoostStyle>(older)).rfind("BoostStyle a of 3 [", 0), 0U);
    EXPECT_THAT(GetErrorText(Exc<&BoostStyle>("f", "file", 0)), Not(HasSubstr("[file")));
}

// A handler of the general kind lets fatal errors pass.
static_assert(!std::is_base_of_v<ExTraceableBase<ExDefault>, Error<&NoParentNode, ExFatal>>);

TEST(SystemError, IsToldByTextAndFiveCodesByType) {
    EXPECT_THROW(throwSystemError("m", EPERM), ExSystemError<EPERM>);
    EXPECT_THROW(throwSystemError("m", ENOENT), ExSystemError<ENOENT>);
    EXPECT_THROW(throwSystemError("m", ECHILD), ExSystemError<ECHILD>);
    EXPECT_THROW(throwSystemError("m", EAGAIN), ExSystemError<EAGAIN>);
    EXPECT_EQ(thrownText<SystemError>([] { throwSystemError("m", EIO); }), "m: Input/output error");
}

} // namespace
