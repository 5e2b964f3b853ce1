#include "commons/file_utils.h"
#include "commons/session.h"
#include "commons/xml_log.h"
#include "commons/xpath_expr.h"
#include "tests/commons/library_test.h"
#include "tests/support/xml_errors.h"

#include <boost/lexical_cast/bad_lexical_cast.hpp>

#include <sstream>

namespace {

using namespace brask;
using namespace test_support;

ExTraceableBase<ExDefault> plain(const std::string& text) {
    return {"", text};
}

/// A message as it stands in the document.
std::string message(const std::string& severity, const std::string& text) {
    return "<message code=\"\" severity=\"" + severity + "\"><description>" + text +
           "</description></message>";
}

class ExecutionLog : public RootTest {
protected:
    static void expectContent(const XmlLog& log, const std::string& children) {
        std::ostringstream out;
        tXmlDocument(log).saveToStream(out, nullptr);
        EXPECT_EQ(out.str(),
                  "<?xml version=\"1.0\"?>\n<execution-result>" + children + "</execution-result>\n");
    }

    const SessionLifetimeController controller{dir.path("session")};
    const std::string result = dir.path("session/migration.result");
};

TEST_F(ExecutionLog, MessagesBelongToTheirObjects) {
    XmlLog xml("");
    xml.AddMessage(20, plain("at the root"));
    xml.AddObject("c", "Customer");
    xml.AddObject("d", "Domain");
    EXPECT_EQ(xml.GetObjects(), (ObjectList{{"c", "Customer"}, {"d", "Domain"}}));
    xml.AddMessage(40, plain("in the domain"));
    xml.AddObject("empty", "Domain");
    for (int open = 3; open > 0; --open) {
        xml.RemoveEmptyObject();
    }
    EXPECT_THROW(xml.RemoveEmptyObject(), Error<&NoParentNode>);
    xml.AddMessage(plain("a warning, as every exception"), {{"c", "Customer"}, {"d", "Domain"}});
    xml.AddMessage(20, plain("beside it"), {{"c", "Customer"}, {"d", "Reseller"}});
    expectContent(xml, message("info", "at the root") + "<object name=\"c\" type=\"Customer\">" +
                           "<object name=\"d\" type=\"Domain\">" + message("error", "in the domain") +
                           message("warning", "a warning, as every exception") + "</object>" +
                           "<object name=\"d\" type=\"Reseller\">" + message("info", "beside it") +
                           "</object></object>");
    const XmlErrors quiet;
    EXPECT_THROW(xml.AddMessage(plain("x"), {{"o'hara", "Customer"}}), Error<&tError_XPath_CantEvaluate>);
}

TEST_F(ExecutionLog, TheSeverityOfTheCallReplacesTheInnermostOnes) {
    XmlLog xml("");
    Error<&UnableToCreateSession> outer;
    outer.Format("<x>");
    outer.Include(Error<&NoParentNode>());
    xml.AddMessage(40, outer);
    expectContent(
        xml,
        "<message code=\"UnableToCreateSession\" severity=\"warning\"><description>Unable to create session: "
        "&lt;x&gt;</description><message code=\"NoParentNode\" severity=\"error\"><description>No parent "
        "node on requested XML element</description></message></message>");
}

TEST_F(ExecutionLog, MergesAnotherResultFile) {
    const std::string other = dir.write(
        "other.xml", "<execution-result status='error'><object name='d' type='Domain'>"
                     "<message code='X' severity='error'><description>e</description>"
                     "<message severity='error'><description>inner</description></message></message>"
                     "<object><message severity='odd'><description>i</description></message></object>"
                     "</object><comment/></execution-result>");
    XmlLog xml("");
    xml.AddObject("d", "Domain");
    xml.AddObject("open", "Domain");
    AddResultFile(xml, other);
    expectContent(xml, "<object name=\"d\" type=\"Domain\"><object name=\"open\" type=\"Domain\"/>" +
                           message("error", "e") + "<object name=\"\" type=\"\">" + message("info", "i") +
                           "</object></object>");
    dir.write("other.xml", "<result/>");
    EXPECT_THROW(AddResultFile(xml, other), Error<&tError_WrongDoc>);
}

TEST_F(ExecutionLog, TheStatusCanOnlyRise) {
    const std::tuple<std::vector<int>, std::vector<int>, std::string> cases[] = {{{}, {}, "error"},
                                                                                 {{10}, {}, "success"},
                                                                                 {{10}, {20}, "info"},
                                                                                 {{30, 20}, {}, "warnings"},
                                                                                 {{10}, {40, 20}, "error"}};
    for (const auto& [raised, messages, status] : cases) {
        std::filesystem::remove(dir.path("session/status.xml"));
        {
            XmlLog xml("status.xml");
            for (const int severity : raised) {
                xml.RaiseStatus(severity);
            }
            for (const int severity : messages) {
                xml.AddMessage(severity, plain("m"));
            }
        }
        EXPECT_THAT(readFile(dir.path("session/status.xml")),
                    testing::StartsWith("<execution-result status=\"" + status + "\""));
    }
}

TEST_F(ExecutionLog, TheRunIsWrittenAtItsEndForThePanelsAccountAndAnEarlierResultKept) {
    dir.write("session/migration.result", "earlier");
    dir.write("session/migration.result.1", "first");
    CreateXmlLog("");
    EXPECT_EQ(readFile(result + ".1") + readFile(result + ".2"), "firstearlier");
    { const LogObjectScope scope("example.com", 9); }
    for (const int level : {0, 1, 2, 3, 4}) {
        GetLogFacade()->Write(level, false, std::to_string(level), nullptr);
    }
    EXPECT_FALSE(std::filesystem::exists(result));
    DestroyXmlLog();
    EXPECT_THAT(
        readFile(result),
        testing::MatchesRegex("<execution-result "
                              "status=\"error\">\n.*severity=\"error\">[^<]*<description>0<.*severity="
                              "\"warning\">[^<]*<description>1<.*=\"info\">[^<]*<description>2<[^01234]*"));
    EXPECT_EQ(statFile(result).st_uid, 54321U);
    EXPECT_EQ(statFile(result).st_gid, 54322U);
    EXPECT_THAT(log.lines,
                testing::ElementsAre("=> example.com Restore domain", "++ example.com Restore domain",
                                     "error: 0", "1", "2", "3", "4"));

    CreateXmlLog("");
    std::filesystem::remove_all(dir.path("session"));
    DestroyXmlLog();
    EXPECT_THAT(log.lines.back(),
                testing::StartsWith("error: Unable to write the execution log " + result + ": "));
}

TEST_F(ExecutionLog, TheQaStatusIsReadFromTheUtilitysElement) {
    EXPECT_FALSE(readQaStatus("u").found) << "there is no file yet";
    const std::pair<std::string, QaStatus> cases[] = {
        {"name='u' severity='error' errcode='-7'>text", {true, -7, 40, "text"}},
        {"name='u' severity='odd' errcode='0'>", {true, 0, 10, "QA test message"}},
        {"name='other' severity='error' errcode='1'>", {}},
        {"name='u' severity='error'>", {}}};
    for (const auto& [element, expected] : cases) {
        dir.write("BMM/qa-status-test.cfg", "<log><util " + element + "</util></log>");
        const QaStatus status = readQaStatus("u");
        EXPECT_EQ(std::tie(status.found, status.errcode, status.severity, status.message),
                  std::tie(expected.found, expected.errcode, expected.severity, expected.message))
            << element;
    }
    dir.write("BMM/qa-status-test.cfg", "<log><util name='u' severity='info' errcode=' 7'/></log>");
    EXPECT_THROW(readQaStatus("u"), boost::bad_lexical_cast);
}

} // namespace
