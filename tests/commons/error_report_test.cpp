#include "commons/error_report.h"
#include "commons/log_facade.h"
#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

/// A product tree whose report sender is a script of the test's.
class ErrorReportTest : public testing::Test {
protected:
    void SetUp() override {
        if (!ErrorReportSender::instance().IsEnabled()) {
            GTEST_SKIP() << "error reports are turned off on this machine";
        }
    }

    void useSender(const std::string& script) const {
        const std::string path = dir.write("admin/bin/send-error-report", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

    static std::string textAt(const std::string& report, const char* xpath) {
        tXmlBmmDocument document(report);
        document.initFileDoc("error");
        return getNodeContent(tXPathExpr(document.doc_.get(), document.root_, xpath).getNode());
    }

    test_support::TempDir dir;
    test_support::FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}}};
};

TEST_F(ErrorReportTest, GraveMessagesReachTheSenderAlsoWithoutASink) {
    useSender("[ \"$*\" = bmm ] && cat >>'" + dir.path("sent") + "'");
    LogFacade log;
    log.Write(2, true, "an information", nullptr);
    log.Write(1, false, "unwanted", nullptr);
    EXPECT_FALSE(std::filesystem::exists(dir.path("sent")));

    const ObjectList objects{{"server", "Server"}, {"d.example", "domain"}};
    log.Write(1, true, "a <warning>\x01 with \xff bytes \xc3\xa4", &objects);
    const std::string report = test_support::readFile(dir.path("sent"));
    EXPECT_EQ(textAt(report, "component"), "domain");
    EXPECT_EQ(textAt(report, "message"), "a <warning>? with ? bytes \xc3\xa4");
    EXPECT_EQ(textAt(report, "file"), ", domain");
    EXPECT_EQ(textAt(report, "line"), "0");
    EXPECT_NE(textAt(report, "trace").find("commons_tests"), std::string::npos)
        << "frames name their program";
    EXPECT_EQ(report.find("additional_info"), std::string::npos);
    const ObjectList none;
    std::filesystem::remove(dir.path("sent"));
    log.Write(0, true, "an error", &none);
    EXPECT_EQ(textAt(test_support::readFile(dir.path("sent")), "component"), "general");
}

TEST_F(ErrorReportTest, TestDataIsAddedWhenItIsThereAndWellFormed) {
    const struct {
        const char* meta;
        const char* scenario;
    } cases[] = {{R"({"scenario": "nightly <1>", "other": 1})", "nightly <1>"},
                 {R"({"other": "x"})", nullptr},
                 {R"({"scenario": 7})", nullptr},
                 {R"(["scenario"])", nullptr},
                 {"{", nullptr},
                 {"", nullptr}};

    for (const auto& c : cases) {
        dir.write("var/test-meta.json", c.meta);
        const std::string report = ErrorReportSender::instance().PrepareContent("general", "m");
        if (c.scenario != nullptr) {
            EXPECT_EQ(textAt(report, "additional_info/scenario"), c.scenario);
        } else {
            EXPECT_EQ(report.find("additional_info"), std::string::npos) << c.meta;
        }
    }
}

TEST_F(ErrorReportTest, NothingThatTheSenderDoesHarmsTheRun) {
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
