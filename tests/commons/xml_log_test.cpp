#include "commons/error.h"
#include "commons/session.h"
#include "commons/xml_log.h"
#include "commons/xpath_expr.h"
#include "tests/support/fixed_params.h"
#include "tests/support/recording_log.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"
#include "tests/support/xml_errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::readFile;
using test_support::RecordingLog;
using test_support::TempDir;
using testing::HasSubstr;

namespace fs = std::filesystem;

ExTraceableBase<ExDefault> plain(const std::string& text) {
    return {"", text};
}

/// A message as it stands in the document.
std::string message(const std::string& severity, const std::string& text) {
    return "<message code=\"\" severity=\"" + severity + "\"><description>" + text +
           "</description></message>";
}

class ExecutionLog : public testing::Test {
protected:
    static std::string content(const XmlLog& log) {
        std::ostringstream out;
        tXmlDocument(log).saveToStream(out, nullptr);
        return out.str();
    }

    static std::string document(const std::string& children) {
        return "<?xml version=\"1.0\"?>\n<execution-result>" + children + "</execution-result>\n";
    }

    TempDir dir;
    const test_support::FixedParams params{{{"BSAADM", "worker"}, {"PRODUCT_ROOT_D", dir.path()}}};
    RecordingLog debugLog;
    const SessionLifetimeController controller{dir.path("session")};
    const std::string result = dir.path("session/migration.result");
};

TEST_F(ExecutionLog, MessagesBelongToTheObjectThatIsOpen) {
    XmlLog log("");
    log.AddMessage(20, plain("at the root"));
    EXPECT_EQ(log.GetObjects(), ObjectList{});
    log.AddObject("c", "Customer");
    log.AddObject("d", "Domain");
    const ObjectList path{{"c", "Customer"}, {"d", "Domain"}};
    EXPECT_EQ(log.GetObjects(), path);
    log.AddMessage(40, plain("in the domain"));
    log.AddObject("empty", "Domain");
    log.AddObject("empty too", "Domain");
    for (int open = 4; open > 0; --open) {
        log.RemoveEmptyObject();
    }
    EXPECT_THROW(log.RemoveEmptyObject(), Error<&NoParentNode>);
    log.AddMessage(plain("a warning, as every exception"), path);
    log.AddMessage(20, plain("beside it"), {{"c", "Customer"}, {"d", "Reseller"}});

    EXPECT_EQ(content(log),
              document(message("info", "at the root") + "<object name=\"c\" type=\"Customer\">" +
                       "<object name=\"d\" type=\"Domain\">" + message("error", "in the domain") +
                       message("warning", "a warning, as every exception") + "</object>" +
                       "<object name=\"d\" type=\"Reseller\">" + message("info", "beside it") +
                       "</object></object>"));
}

TEST_F(ExecutionLog, TheSeverityOfTheCallReplacesTheInnermostOnes) {
    XmlLog log("");
    Error<&UnableToCreateSession> outer;
    outer.Format("x");
    log.AddMessage(40, outer);
    outer.Include(Error<&NoParentNode>());
    log.AddMessage(40, outer);
    const std::string description = "<description>Unable to create session: x</description>";
    EXPECT_EQ(content(log),
              document("<message code=\"UnableToCreateSession\" severity=\"error\">" + description +
                       "</message><message code=\"UnableToCreateSession\" severity=\"warning\">" +
                       description +
                       "<message code=\"NoParentNode\" severity=\"error\">"
                       "<description>No parent node on requested XML element</description></message>"
                       "</message>"));
}

TEST_F(ExecutionLog, AQuoteInANameBreaksItsLookUp) {
    XmlLog log("");
    const test_support::XmlErrors quiet;
    EXPECT_THROW(log.AddMessage(plain("x"), {{"o'hara", "Customer"}}), Error<&tError_XPath_CantEvaluate>);
}

TEST_F(ExecutionLog, AnEarlierResultIsKeptUnderTheFirstFreeName) {
    for (const char* name : {"", ".1", ".3"}) {
        dir.write(std::string("session/migration.result") + name, std::string("result") + name);
    }
    const XmlLog log("");
    EXPECT_FALSE(fs::exists(result));
    EXPECT_EQ(readFile(result + ".1"), "result.1");
    EXPECT_EQ(readFile(result + ".2"), "result");
    EXPECT_EQ(readFile(result + ".3"), "result.3");
}

TEST_F(ExecutionLog, MergesAnotherResultFile) {
    const std::string other = dir.write(
        "other.xml", "<execution-result status='error'><object name='d' type='Domain'>"
                     "<message code='X' severity='error'><description>e</description>"
                     "<message severity='error'><description>inner</description></message></message>"
                     "<object><message severity='odd'><description>i</description></message></object>"
                     "</object><comment/><message severity='warning'><description>w</description>"
                     "</message></execution-result>");
    XmlLog log("");
    log.AddObject("d", "Domain");
    log.AddObject("open", "Domain");
    AddResultFile(log, other);
    const std::string merged = "<object name=\"\" type=\"\">" + message("info", "i") + "</object>";
    EXPECT_EQ(content(log), document("<object name=\"d\" type=\"Domain\">"
                                     "<object name=\"open\" type=\"Domain\"/>" +
                                     message("error", "e") + merged + "</object>" + message("warning", "w")));

    AddResultFile(other); // there is no current log
    dir.write("other.xml", "<result/>");
    EXPECT_THROW(AddResultFile(log, other), Error<&tError_WrongDoc>);
    dir.write("other.xml", "<execution-result><message severity='error'/></execution-result>");
    EXPECT_THROW(AddResultFile(log, other), Error<&tError_XPath_CantEvaluate>);
}

TEST_F(ExecutionLog, AScopeOpensAnObjectAndNotesItsBeginAndEnd) {
    CreateXmlLog("");
    {
        const LogObjectScope scope("example.com", 9);
        EXPECT_EQ(currentLog->GetObjects(), (ObjectList{{"example.com", "Restore domain"}}));
    }
    EXPECT_TRUE(currentLog->GetObjects().empty());
    EXPECT_THAT(debugLog.lines,
                testing::ElementsAre("=> example.com Restore domain", "++ example.com Restore domain"));
    DestroyXmlLog();
    DestroyXmlLog();
    const LogObjectScope scope("alone", 0); // there is no current log
}

TEST_F(ExecutionLog, AFileThatCannotBeWrittenIsToldAndTheRunGoesOn) {
    CreateXmlLog("");
    fs::remove_all(dir.path("session"));
    DestroyXmlLog();
    ASSERT_EQ(debugLog.lines.size(), 1U);
    EXPECT_THAT(debugLog.lines[0], testing::StartsWith("error: Unable to write the execution log " + result +
                                                       ": Cannot create a temporary file"));
}

TEST_F(ExecutionLog, NeedsASession) {
    SessionFiles* const open = std::exchange(session, nullptr);
    EXPECT_THROW(CreateXmlLog(""), Error<&AssertionFailed>);
    session = open;
    EXPECT_EQ(currentLog, nullptr);
}

class ExecutionLogFile : public ExecutionLog {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can give files away";
        }
    }
};

TEST_F(ExecutionLogFile, TheStatusCanOnlyRise) {
    const struct {
        std::vector<int> raised;
        std::vector<int> messages;
        const char* status;
    } cases[] = {{{}, {}, "error"},          {{10}, {}, "success"},        {{20}, {}, "info"},
                 {{10}, {20}, "info"},       {{10}, {30}, "warnings"},     {{40, 10}, {}, "error"},
                 {{30, 20}, {}, "warnings"}, {{10}, {30, 40, 20}, "error"}};

    for (const auto& [raised, messages, status] : cases) {
        fs::remove(dir.path("session/status.xml"));
        {
            XmlLog log("status.xml");
            for (const int severity : raised) {
                log.RaiseStatus(severity);
            }
            for (const int severity : messages) {
                log.AddMessage(severity, plain("m"));
            }
        }
        EXPECT_THAT(readFile(dir.path("session/status.xml")),
                    testing::StartsWith(std::string("<execution-result status=\"") + status + "\""));
    }
}

TEST_F(ExecutionLogFile, TheRunIsWrittenAtItsEndForThePanelsAccount) {
    CreateXmlLog("");
    GetLogFacade()->Write(0, false, "failed", nullptr);
    GetLogFacade()->Write(2, false, "note", nullptr);
    GetLogFacade()->Write(3, false, "for the debug log alone", nullptr);
    EXPECT_FALSE(fs::exists(result));
    DestroyXmlLog();
    EXPECT_EQ(readFile(result), "<execution-result status=\"error\">\n"
                                "  <message code=\"\" severity=\"error\">\n"
                                "    <description>failed</description>\n"
                                "  </message>\n"
                                "  <message code=\"\" severity=\"info\">\n"
                                "    <description>note</description>\n"
                                "  </message>\n"
                                "</execution-result>");

    struct stat info {};

    ASSERT_EQ(stat(result.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 54321U);
    EXPECT_EQ(info.st_gid, 54322U);

    GetLogFacade()->Write(0, false, "after the log", nullptr);
    EXPECT_THAT(readFile(result), testing::Not(HasSubstr("after the log")));
}

} // namespace
