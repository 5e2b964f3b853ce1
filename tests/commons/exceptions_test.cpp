#include "commons/exceptions.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace brask;

const char* twoPlaceholders(bool wantName) {
    return wantName ? "twoPlaceholders" : "{} and {}";
}

const char* boostStyle(bool wantName) {
    return wantName ? "Boost::Style" : "%1% of %2%";
}

/// Notes every fact it is told, as "Name=value".
struct FactRecorder : ExInfoVisitor {
    std::vector<std::string> facts;

    void OnName(const std::string& v) override { facts.push_back("name=" + v); }

    void OnMessage(const std::string& v) override { facts.push_back("message=" + v); }

    void OnFunction(const std::string& v) override { facts.push_back("function=" + v); }

    void OnFile(const std::string& v) override { facts.push_back("file=" + v); }

    void OnLine(int v) override { facts.push_back("line=" + std::to_string(v)); }

    void OnInner() override { facts.emplace_back("inner"); }

    void OnSeverity(int v) override { facts.push_back("severity=" + std::to_string(v)); }
};

std::vector<std::string> factsOf(const IExTraceable& ex) {
    FactRecorder recorder;
    ex.Accept(recorder);
    return recorder.facts;
}

TEST(Error, TellsItsFactsInOrderAndItsInnerExceptionLast) {
    Error<&twoPlaceholders> outer{std::source_location{}};
    outer.Format(1, 2);
    outer.Include(Error<&ParamError, ExFatal>(std::source_location{}).Format("x", "y"));

    const std::vector<std::string> expected{"function=",
                                            "file=",
                                            "line=0",
                                            "name=twoPlaceholders",
                                            "severity=30",
                                            "message=1 and 2",
                                            "inner",
                                            "function=",
                                            "file=",
                                            "line=0",
                                            "name=ParamError",
                                            "severity=30",
                                            "message=Can't get param x: y"};
    EXPECT_EQ(factsOf(outer), expected);

    const std::unique_ptr<IExTraceable> copy(outer.Clone());
    EXPECT_EQ(factsOf(*copy), expected);
}

TEST(Error, CarriesThePlaceOfTheThrow) {
    try {
        BRASK_THROW(twoPlaceholders, "a", "b");
    } catch (const Error<&twoPlaceholders>& e) {
        const auto facts = factsOf(e);
        EXPECT_NE(facts[0].find("TestBody"), std::string::npos) << facts[0];
        EXPECT_NE(facts[1].find("exceptions_test.cpp"), std::string::npos) << facts[1];
        EXPECT_STREQ(e.what(), "a and b");
    }
}

TEST(Error, KeepsItsTemplateUntilFormattedAndWhenTheTemplateFails) {
    EXPECT_STREQ(Error<&twoPlaceholders>().what(), "{} and {}");

    const std::string text = Error<&twoPlaceholders>().Format("only one").what();
    EXPECT_TRUE(text.ends_with(": {} and {}")) << text;
    EXPECT_GT(text.size(), std::string(": {} and {}").size());
}

TEST(Error, BracesInAnArgumentSurviveTheCopyOfAThrow) {
    try {
        BRASK_THROW(twoPlaceholders, "{}", "{1}");
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "{} and {1}");
    }
}

TEST(Error, FatalErrorsPassHandlersOfTheGeneralKind) {
    const auto throwFatal = [] { BRASK_THROW_AS(NotEnoughSpaceAt, ExFatal, "/d", 0, 4096); };
    EXPECT_THROW(
        {
            try {
                throwFatal();
            } catch (const ExTraceableBase<ExDefault>&) {
                ADD_FAILURE() << "caught as a default error";
            }
        },
        IExTraceable);
    try {
        throwFatal();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(),
                     "Selected filesystem at /d has only 0 bytes free, but 4096 bytes are needed for "
                     "operation");
    }
}

TEST(Exc, RendersWhatWasFedAndExplainsWhatIsMissing) {
    Exc<&boostStyle> ex("f", "file", 7);
    EXPECT_STREQ(ex.what(), "%1% of %2%");
    ex % "a";
    EXPECT_TRUE(std::string(ex.what()).ends_with(": %1% of %2%")) << ex.what();
    ex % 3;
    const std::unique_ptr<IExTraceable> copy(ex.Clone());
    const std::vector<std::string> expected{"function=f",        "file=file",   "line=7",
                                            "name=Boost::Style", "severity=30", "message=a of 3"};
    EXPECT_EQ(factsOf(*copy), expected);
}

TEST(RequireThat, RaisesTheConditionAsText) {
    EXPECT_NO_THROW(requireThat(true, "x"));
    try {
        requireThat(false, "filename != NULL");
        FAIL();
    } catch (const Error<&AssertionFailed>& e) {
        EXPECT_STREQ(e.what(), "Assertion failed: filename != NULL");
    }
}

} // namespace
