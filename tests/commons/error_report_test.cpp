#include "commons/error_report.h"
#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/commons/library_test.h"

namespace {

using namespace brask;

/// A product tree whose report sender is a script of the test's.
class ErrorReport : public LibraryTest {
protected:
    void useSender(const std::string& script) const {
        const std::string path = dir.write("admin/bin/send-error-report", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

    static std::string textAt(const std::string& report, const char* xpath) {
        tXmlBmmDocument document(report);
        document.initFileDoc("error");
        return getNodeContent(tXPathExpr(document.doc_.get(), document.root_, xpath).getNode());
    }
};

TEST_F(ErrorReport, GraveMessagesReachTheSenderAlsoWithoutASink) {
    useSender("[ \"$*\" = bmm ] && cat >>'" + dir.path("sent") + "'");
    const ObjectList objects{{"server", "Server"}, {"d.example", "domain"}};
    LogFacade facade;
    facade.Write(2, true, "an information", nullptr);
    facade.Write(1, false, "unwanted", nullptr);
    facade.Write(1, true, "a <warning>\x01 with \xff bytes \xc3\xa4", &objects);
    const std::string report = test_support::readFile(dir.path("sent"));
    EXPECT_EQ(textAt(report, "component"), "domain");
    EXPECT_EQ(textAt(report, "message"), "a <warning>? with ? bytes \xc3\xa4");
    EXPECT_EQ(textAt(report, "file"), ", domain");
    EXPECT_THAT(textAt(report, "trace"), testing::HasSubstr("commons_tests"));
    EXPECT_THAT(report, testing::Not(testing::HasSubstr("additional_info")));
}

TEST_F(ErrorReport, TestDataIsAddedWhenItIsThereAndWellFormed) {
    for (const char* meta : {R"({"scenario": 7})", R"(["scenario"])", R"({"other": "x"})", "{", ""}) {
        dir.write("var/test-meta.json", meta);
        const std::string report = ErrorReportSender::instance().PrepareContent("general", "m");
        EXPECT_EQ(report.find("additional_info"), std::string::npos) << meta;
    }
    dir.write("var/test-meta.json", R"({"scenario": "nightly <1>", "other": 1})");
    EXPECT_EQ(
        textAt(ErrorReportSender::instance().PrepareContent("general", "m"), "additional_info/scenario"),
        "nightly <1>");
}

TEST_F(ErrorReport, NothingThatTheSenderDoesHarmsTheRun) {
    const std::string large(4'000'000, 'x');
    EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", large)) << "no sender";
    for (const char* script : {"exit 1", "exit 0", "kill -9 $$", "exec <&-; sleep 0.2"}) {
        useSender(script);
        EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", large)) << script;
    }
    const test_support::FixedParams noRoot{test_support::FixedParams::Values{}};
    EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", "m"));
}

} // namespace
