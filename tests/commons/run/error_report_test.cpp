#include "commons/run/error_report.h"
#include "tests/commons/library_test.h"

namespace {

using namespace brask;
using testing::HasSubstr;

/// A product tree whose report sender is a script of the test's.
class ErrorReport : public LibraryTest {
protected:
    ErrorReport() { ErrorReportSender::installForLog(); }

    void useSender(const std::string& script) const {
        const std::string path = dir.write("admin/bin/send-error-report", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
};

TEST_F(ErrorReport, GraveMessagesReachTheSenderAlsoWithoutASink) {
    if (!ErrorReportSender::instance().IsEnabled()) {
        GTEST_SKIP() << "error reports are turned off on this machine";
    }
    useSender("[ \"$*\" = bmm ] && cat >>'" + dir.path("sent") + "'");
    const ObjectList objects{{"server", "Server"}, {"d.example", "domain"}};
    LogFacade().Write(2, true, "an information", nullptr);
    LogFacade().Write(1, false, "unwanted", nullptr);
    LogFacade().Write(1, true, "a <warning>\x01 with \xff bytes \xc3\xa4", &objects);
    const std::string report = test_support::readFile(dir.path("sent"));
    EXPECT_THAT(report, HasSubstr("<component>domain</component>"));
    EXPECT_THAT(report, HasSubstr("<message>a &lt;warning&gt;? with ? bytes &#xE4;</message>"));
}

TEST_F(ErrorReport, TestDataIsAddedWhenItIsThereAndWellFormed) {
    for (const char* meta : {R"({"scenario": 7})", R"(["scenario"])", R"({"other": "x"})", "{", ""}) {
        dir.write("var/test-meta.json", meta);
        const std::string report = ErrorReportSender::instance().PrepareContent("general", "m");
        EXPECT_EQ(report.find("additional_info"), std::string::npos) << meta;
    }
    dir.write("var/test-meta.json", R"({"scenario": "nightly <1>", "other": 1})");
    const std::string report = ErrorReportSender::instance().PrepareContent("general", "m");
    EXPECT_THAT(report, HasSubstr("<scenario>nightly &lt;1&gt;</scenario>"));
}

TEST_F(ErrorReport, NothingThatTheSenderDoesHarmsTheRun) {
    const std::string large(4'000'000, 'x');
    EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", large)) << "no sender";
    for (const char* script : {"exit 1", "kill -9 $$", "exec <&-; sleep 0.2"}) {
        useSender(script);
        EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", large)) << script;
    }
    const test_support::FixedParams noRoot{test_support::FixedParams::Values{}};
    EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", "m"));
}

} // namespace
