#include "commons/exceptions.h"
#include "commons/system_error.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>
#include <openssl/err.h>

namespace {

using namespace brask;
using test_support::thrownText;

BRASK_ERROR_TAG(TwoPlaceholders, "{} and {}")
BRASK_ERROR_TAG(BoostStyle, "%1% of %2%")

/// All the facts of an exception's copy, in the order in which it tells them.
std::string factsOf(const IExTraceable& ex) {
    struct Recorder : ExInfoVisitor {
        void OnName(const std::string& v) override { facts += "name=" + v; }

        void OnMessage(const std::string& v) override { facts += " message=" + v; }

        void OnFunction(const std::string& v) override { facts += "function=" + v; }

        void OnFile(const std::string& v) override { facts += " file=" + v; }

        void OnLine(int v) override { facts += " line=" + std::to_string(v) + " "; }

        void OnInner() override { facts += " inner "; }

        void OnSeverity(int v) override { facts += " severity=" + std::to_string(v); }

        std::string facts;
    } recorder;

    std::unique_ptr<IExTraceable>(ex.Clone())->Accept(recorder);
    return recorder.facts;
}

TEST(Error, TellsItsFactsInOrderAndItsInnerExceptionLast) {
    Error<&TwoPlaceholders> outer{std::source_location{}};
    outer.Format("{}", 2);
    outer.Include(Error<&ParamError, ExFatal>(std::source_location{}).Format("x", "y"));
    EXPECT_EQ(factsOf(outer),
              "function= file= line=0 name=TwoPlaceholders severity=30 message={} and 2 inner "
              "function= file= line=0 name=ParamError severity=30 message=Can't get param x: y");
    Exc<&BoostStyle> older("f", "file", 7);
    older % "a";
    EXPECT_THAT(older.what(), testing::EndsWith(": %1% of %2%"));
    older % 3;
    EXPECT_EQ(factsOf(older), "function=f file=file line=7 name=BoostStyle severity=30 message=a of 3");
    EXPECT_THAT(factsOf(Error<&TwoPlaceholders>().Format(1)), testing::EndsWith(": {} and {}"));
}

TEST(Error, FatalErrorsPassHandlersOfTheGeneralKind) {
    const auto handled = [] {
        try {
            BRASK_THROW_AS(NotEnoughSpaceAt, ExFatal, "/d", 0, 4096);
        } catch (const ExTraceableBase<ExDefault>&) {
            ADD_FAILURE() << "caught as a default error";
        }
    };
    EXPECT_EQ(thrownText<std::runtime_error>(handled),
              "Selected filesystem at /d has only 0 bytes free, but 4096 bytes are needed for operation");
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([] { requireThat(false, "a != b"); }),
              "Assertion failed: a != b");
}

TEST(SystemError, TellsItsCodeByTextAndFiveCodesByType) {
    EXPECT_EQ(thrownText<ExSystemError<11>>([] { throwSystemError("", EAGAIN); }), strerror(EAGAIN));
    EXPECT_EQ(thrownText<ExSystemError<2>>([] { throwSystemError("m", ENOENT); }),
              "m: No such file or directory");
    EXPECT_EQ(thrownText<SystemError>([] { throwSystemError("m", EIO); }), "m: Input/output error");
}

TEST(OpenSslException, TakesTheWholeQueueOldestFirst) {
    ERR_raise(ERR_LIB_RSA, 101);
    ERR_raise(ERR_LIB_PEM, 102);
    const std::source_location here = std::source_location::current();
    EXPECT_THAT(
        OpenSslException(here, "Unable").what(),
        testing::MatchesRegex("Unable: OpenSSL error: error:.*rsa routines.*\nerror:.*PEM routines.*"));
    EXPECT_STREQ(OpenSslException(here, "Unable").what(), "Unable: OpenSSL error: ");
}

} // namespace
