#include "commons/run/error_report.h"
#include "commons/run/session_files.h"
#include "commons/run/xml_log.h"
#include "tests/commons/library_test.h"

namespace {

using namespace test_support;

/// A product tree whose report sender is a script of the test's.
class ErrorReport : public LibraryTest {
protected:
    ErrorReport() { ErrorReportSender::installForLog(); }

    void useSender(const std::string& script) const {
        const std::string path = dir.write("admin/bin/send-error-report", "#!/bin/sh\n" + script + "\n");
        fs::permissions(path, fs::perms::owner_all);
    }
};

/// Whether reports are sent, as a process sees it that asks twice while `change` happens in between. Comes
/// first: the process of the tests themselves must not have asked so far.
TEST_F(ErrorReport, AreTurnedOffByAFileThatIsThereAtTheFirst) {
    useSender("rm '" + dir.path("unsent") + "'");
    const auto ask = [this](auto change) {
        dir.write("unsent", "");
        return inChild([&] {
            fs::current_path(dir.path()); // where this program's switch is
            printf("%d", ErrorReportSender::instance().IsEnabled());
            change("feedback-disabled");
            printf("%d", ErrorReportSender::instance().IsEnabled());
            ErrorReportSender::instance().Send("general", "m");
            printf("%d", fs::exists("unsent"));
        });
    };
    EXPECT_EQ(ask([](const char* file) { fs::create_directory(file); }).out, "110");
    EXPECT_EQ(ask([](const char* file) { fs::remove(file); }).out, "001");
}

TEST_F(ErrorReport, TellsOfAGraveMessageWhatItIsAboutAndWhereItCameFrom) {
    useSender("[ \"$*\" = bmm ] && cat >'" + dir.path("sent") + "'");
    const SessionLifetimeController controller(dir.path("session"));
    XmlLog xml("result.xml");
    LogFacade facade;
    facade.SetSinks(nullptr, &xml);
    const ObjectList objects{{"server", "Server"}, {"d.example", "domain"}};
    const auto componentOf = [&](const ObjectList* path) {
        facade.Write(1, true, "m", path);
        const std::string report = readFile(dir.path("sent"));
        const std::size_t begin = report.find("<component>") + 11;
        return report.substr(begin, report.find('<', begin) - begin);
    };
    facade.Write(2, true, "an information", nullptr);
    facade.Write(1, false, "unwanted", nullptr);
    EXPECT_FALSE(fs::exists(dir.path("sent")));
    EXPECT_EQ(componentOf(nullptr), "general");
    xml.AddObject("c", "Customer");
    EXPECT_EQ(componentOf(nullptr), "Customer");
    EXPECT_EQ(componentOf(&objects), "domain");
    EXPECT_THAT(
        readFile(dir.path("sent")),
        MatchesRegex(".*\n<error><component>domain</component><message>m</message>"
                     "<file>, domain</file><line>0</line><trace>( +[0-9]+# .*\n)+</trace></error>\n"));
}

TEST_F(ErrorReport, HoldsWhatXmlAllowsAndAMarkForTheRest) {
    const std::pair<std::string, std::string> cases[] = {
        {"a <warning>\x01 \xff \xc3\xa4\t\n", "a &lt;warning&gt;? ? &#xE4;\t\n"},
        {std::string("\0z", 2), "?z"},
        {"\xef\xbf\xbd\xef\xbf\xbe\xef\xbf\xbf", "&#xFFFD;??"},
        {"\xf4\x8f\xbf\xbf\xf4\x90\x80\x80", "&#x10FFFF;?"},
        {"\xf8\x88\x80\x80\x80z", "?z"},
    };
    testing::internal::CaptureStderr();
    for (const auto& [text, inXml] : cases) {
        EXPECT_THAT(ErrorReportSender::instance().PrepareContent("general", text),
                    HasSubstr("<message>" + inXml + "</message>"));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ErrorReport, TestDataIsAddedWhenItIsThereAndWellFormed) {
    const auto report = [this](const char* meta) {
        dir.write("var/test-meta.json", meta);
        return ErrorReportSender::instance().PrepareContent("general", "m");
    };
    for (const char* meta : {R"({"scenario": 7})", R"(["scenario"])", R"({"other": "x"})", "{", ""}) {
        EXPECT_THAT(report(meta), Not(HasSubstr("additional_info")));
    }
    EXPECT_THAT(report(R"({"scenario": "nightly <1>\uffff", "other": 1})"),
                HasSubstr("<scenario>nightly &lt;1&gt;?</scenario>"));
}

TEST_F(ErrorReport, NothingThatTheSenderDoesHarmsTheRun) {
    const std::string large(4'000'000, 'x');
    EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", large)) << "no sender";
    for (const char* script : {"exit 1", "kill -9 $$", "exec <&-; sleep 0.2"}) {
        useSender(script);
        EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", large)) << script;
    }
    const FixedParams noRoot{FixedParams::Values{}};
    EXPECT_NO_THROW(ErrorReportSender::instance().Send("general", "m"));
}

} // namespace
