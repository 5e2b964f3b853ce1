#include "commons/files/file_utils.h"
#include "commons/run/xml_log.h"
#include "commons/session.h"
#include "commons/xml/xml_globals.h"
#include "commons/xml/xpath_expr.h"
#include "lib/process/lib/identity.h"
#include "tests/commons/library_test.h"

#include <regex>
#include <sstream>

namespace {

using namespace test_support;

using Plain = ExTraceableBase<ExDefault>;

class ExecutionLog : public LibraryTest {
protected:
    /// Compares the log with `expected`, in which severity and text of a simple message read as
    /// {severity:text}.
    void expectContent(const std::string& expected) const {
        std::ostringstream out;
        tXmlDocument(xml).saveToStream(out, nullptr);
        const std::regex simple(
            R"(<message code="" severity=.(\w+).><desc[a-z]*>([^<]*)</description></message>)");
        EXPECT_EQ(std::regex_replace(out.str(), simple, "{$1:$2}"),
                  "<?xml version=\"1.0\"?>\n<execution-result>" + expected + "</execution-result>\n");
    }

    const SessionLifetimeController controller{dir.path("session")};
    XmlLog xml{"status.xml"};
};

TEST_F(ExecutionLog, MessagesBelongToTheirObjectsAndInnerOnesToTheirOuter) {
    xml.AddObject("c", "Customer");
    xml.AddObject("d", "Domain");
    EXPECT_EQ(xml.GetObjects(), (ObjectList{{"c", "Customer"}, {"d", "Domain"}}));
    xml.AddMessage(40, Plain("", "in it"));
    xml.AddObject("empty", "Domain");
    for (int open = 3; open > 0; --open) {
        xml.RemoveEmptyObject();
    }
    EXPECT_THROW(xml.RemoveEmptyObject(), Error<&NoParentNode>);
    xml.AddMessage(Plain("", "<again>"), {{"c", "Customer"}, {"d", "Domain"}});
    xml.AddMessage(20, Plain("", "beside it"), {{"c", "Customer"}, {"d", "Reseller"}});
    Error<&AssertionFailed> outer;
    outer.Include(Error<&NoParentNode>());
    xml.AddMessage(40, outer.Format("a"));
    expectContent(
        R"(<object name="c" type="Customer"><object name="d" type="Domain">{error:in it})"
        R"({warning:&lt;again&gt;}</object><object name="d" type="Reseller">{info:beside it}</object>)"
        R"(</object><message code="AssertionFailed" severity="warning"><description>Assertion failed: a)"
        R"(</description><message code="NoParentNode" severity="error"><description>No parent node on )"
        R"(requested XML element</description></message></message>)");
}

TEST_F(ExecutionLog, AnObjectIsTheFirstOfItsNameAndTypeThatIsLeft) {
    const ObjectList path{{"o", "Domain"}};
    xml.AddObject("o", "Domain");
    xml.RemoveEmptyObject();
    xml.AddMessage(40, Plain("", "1"), path);
    xml.AddObject("o", "Domain");
    xml.AddMessage(Plain("", "2"));
    xml.RemoveEmptyObject();
    xml.AddObject("o", "Domain");
    xml.RemoveEmptyObject();
    xml.AddMessage(40, Plain("", "3"), path);
    xml.AddMessage(40, Plain("", "4"), {{"o", "Domain"}, {"o", "Domain"}});
    xml.AddMessage(40, Plain("", "5"), {{"' or @name='o", "Domain"}});
    expectContent(
        R"(<object name="o" type="Domain">{error:1}{error:3}<object name="o" type="Domain">)"
        R"({error:4}</object>{error:5}</object><object name="o" type="Domain">{warning:2}</object>)");
    const QuietXmlErrors quiet;
    for (const std::string name : {"it's", "\x01"}) {
        EXPECT_THROW(xml.AddMessage(Plain("", ""), {{name, ""}}), Error<&tError_XPath_CantEvaluate>);
    }
}

TEST_F(ExecutionLog, MergesAnotherResultFile) {
    dir.write("other.xml",
              "<execution-result><object name='d' type='Domain'><message code='X' severity='error'>"
              "<description>e</description><message severity='error'><description>inner</description>"
              "</message></message><object><message severity='odd'><description>i</description></message>"
              "</object></object><comment/></execution-result>");
    xml.AddObject("d", "Domain");
    xml.AddObject("open", "Domain");
    AddResultFile(xml, dir.path("other.xml"));
    expectContent("<object name=\"d\" type=\"Domain\"><object name=\"open\" type=\"Domain\"/>{error:e}"
                  "<object name=\"\" type=\"\">{info:i}</object></object>");
    EXPECT_THROW(AddResultFile(xml, dir.write("other.xml", "<result/>")), Error<&tError_WrongDoc>);
    EXPECT_THROW(AddResultFile(xml, dir.write("other.xml", "<result>")), Error<&tError_ParseFile>);
    EXPECT_EQ(xmlGenericErrorContext, nullptr) << "the buffer of the failed parse is gone";
}

TEST_F(ExecutionLog, TheStatusCanOnlyRise) {
    const std::pair<std::vector<int>, std::string> cases[] = {{{}, "error"},
                                                              {{10}, "success"},
                                                              {{10, 30, 20}, "warnings"},
                                                              {{10, 40, 20}, "error"},
                                                              {{10, 25}, "error"}};
    for (const auto& [severities, status] : cases) {
        {
            XmlLog run("status.xml");
            std::for_each(severities.begin(), severities.end(), [&](int each) { run.RaiseStatus(each); });
        }
        EXPECT_THAT(readFile(dir.path("session/status.xml")), HasSubstr("status=\"" + status + "\""));
    }
}

TEST_F(ExecutionLog, TheRunIsWrittenAtItsEndForThePanelsAccountAndAnEarlierResultKept) {
    const std::string result = dir.write("session/migration.result", "earlier");
    dir.write("session/migration.result.1", "first");
    CreateXmlLog("");
    EXPECT_EQ(readFile(result + ".1") + readFile(result + ".2"), "firstearlier");
    { const LogObjectScope scope("example.com", 9); }
    for (const int level : {1, 2, 3, 4}) {
        GetLogFacade()->Write(level, false, std::to_string(level), nullptr);
    }
    const ObjectList domain{{"d", "Domain"}};
    GetLogFacade()->Write(2, false, "5", &domain);
    EXPECT_FALSE(fs::exists(result));
    DestroyXmlLog();
    EXPECT_THAT(readFile(result), MatchesRegex("<execution-result status=.warnings.>\n  <message .*>\n"
                                               "    <description>1<.*>2</description>\n[^34]*"
                                               "<object name=.d. type=.Domain.>[^345]*>5<[^34]*"));
    EXPECT_EQ(statFile(result).st_uid, idOfUser("bsaadm", 0));
    EXPECT_THAT(log.lines, ElementsAre("=> example.com Restore domain", testing::_, "1", "2", "3", "4", "5"));

    CreateXmlLog("");
    fs::remove_all(dir.path("session"));
    DestroyXmlLog();
    DestroyXmlLog(); // there is none any more
    EXPECT_NE(GetLogFacade(), nullptr) << "the debug log still holds it";
    EXPECT_THAT(log.lines.back(), StartsWith("error: Unable to write the execution log " + result + ": "));
}

TEST_F(ExecutionLog, TheQaStatusIsReadFromTheUtilitysElement) {
    EXPECT_FALSE(readQaStatus("u").found) << "there is no file yet";
    const std::pair<std::string, std::string> cases[] = {
        {"name='u' severity='error' errcode='-7'>text", "1 -7 40 text"},
        {"name='u' severity='odd' errcode='0'>", "1 0 10 QA test message"},
        {"name='u' severity='error'>", "0 "}};
    for (const auto& [element, expected] : cases) {
        dir.write("BMM/qa-status-test.cfg", "<log><util " + element + "</util></log>");
        const auto [found, code, severity, text] = readQaStatus("u");
        EXPECT_THAT(fmtlib::format("{:d} {} {} {}", found, code, severity, text), StartsWith(expected));
    }
    dir.write("BMM/qa-status-test.cfg", "<log>");
    EXPECT_THROW(readQaStatus("u"), Error<&tError_ParseFile>);
    EXPECT_EQ(xmlGenericErrorContext, nullptr) << "the buffer of the failed parse is gone";
}

} // namespace
