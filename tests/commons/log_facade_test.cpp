#include "commons/log_facade.h"
#include "commons/shared_tags.h"
#include "commons/text_formatters.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace brask;

struct RecordingDebugLog : DebugLog {
    std::vector<std::string> lines;

    void Info(const std::string& message) override { lines.push_back("info " + message); }

    void Error(const std::string& message) override { lines.push_back("error " + message); }

    void Info(const IExTraceable& ex) override { Info(GetErrorText(ex)); }

    bool IsVerbose() const override { return false; }

    bool IsDebug() const override { return false; }
};

struct RecordingXmlLog : Log {
    std::vector<std::string> messages;

    void RaiseStatus(int) override {}

    void AddMessage(const IExTraceable& ex) override { AddMessage(ex.GetSeverity(), ex); }

    void AddMessage(int severity, const IExTraceable& ex) override {
        messages.push_back(std::to_string(severity) + " " + ex.GetText());
    }

    void AddMessage(const IExTraceable& ex, const ObjectList& objects) override {
        AddMessage(ex.GetSeverity(), ex, objects);
    }

    void AddMessage(int severity, const IExTraceable& ex, const ObjectList& objects) override {
        messages.push_back(objects.back().first + ": " + std::to_string(severity) + " " + ex.GetText());
    }

    void AddObject(const std::string&, const std::string&) override {}

    void RemoveEmptyObject() override {}

    ObjectList GetObjects() const override { return {}; }
};

TEST(LogFacade, GivesEachLevelToTheSinksThatWantIt) {
    RecordingDebugLog debug;
    RecordingXmlLog xml;
    LogFacade facade;
    facade.SetSinks(&debug, &xml);
    const ObjectList path{{"d.example", "domain"}};
    for (int level = 0; level <= 4; ++level) {
        facade.Write(level, false, std::to_string(level), level == 2 ? &path : nullptr);
    }
    EXPECT_EQ(debug.lines, (std::vector<std::string>{"error 0", "info 1", "info 2", "info 3", "info 4"}));
    EXPECT_EQ(xml.messages, (std::vector<std::string>{"40 0", "30 1", "d.example: 20 2"}));

    facade.SetSinks(nullptr, &xml);
    facade.Write(3, true, "verbose", nullptr);
    EXPECT_EQ(xml.messages.size(), 3U);
}

TEST(LogFacade, FiltersExceptionsByItsLevelOnlyWhereAsked) {
    RecordingDebugLog debug;
    LogFacade facade;
    facade.SetSinks(&debug, nullptr);
    const Error<&NoParentNode> ex{std::source_location{}};
    facade.LogIfEnabled(3, false, ex);
    EXPECT_TRUE(debug.lines.empty());
    facade.SetLevel(3);
    facade.LogIfEnabled(3, false, ex);
    EXPECT_EQ(debug.lines,
              (std::vector<std::string>{"info NoParentNode No parent node on requested XML element"}));
}

TEST(LogFacade, LivesAsLongAsItsLongerSinkAndKeepsItsLevel) {
    logMessage(0, "nobody listens");
    ASSERT_EQ(GetLogFacade(), nullptr);
    RecordingDebugLog debug;
    RecordingXmlLog xml;
    currentLog = &xml;
    AttachLogFacade();
    GetLogFacade()->SetLevel(4);
    currentDebugLog = &debug;
    AttachLogFacade();
    currentLog = nullptr;
    DetachLogFacade();
    ASSERT_NE(GetLogFacade(), nullptr);
    EXPECT_EQ(GetLogFacade()->GetLevel(), 4);
    logMessage(2, "{} of {}", 1, "x");
    logMessage(2, "{} of {}", 1);
    EXPECT_EQ(debug.lines[0], "info 1 of x");
    EXPECT_TRUE(debug.lines[1].ends_with(": {} of {}")) << debug.lines[1];
    EXPECT_TRUE(xml.messages.empty());
    currentDebugLog = nullptr;
    DetachLogFacade();
    EXPECT_EQ(GetLogFacade(), nullptr);
}

TEST(TextFormatters, RenderAnExceptionAndItsChain) {
    Error<&ParamError> outer;
    outer.Format("a", "b");
    const std::string line = GetErrorText(outer);
    EXPECT_TRUE(line.starts_with("ParamError Can't get param a: b [")) << line;
    EXPECT_NE(line.find("log_facade_test.cpp:ParamError] \n"), std::string::npos) << line;
    EXPECT_EQ(GetErrorMessage(outer), "Can't get param a: b");

    outer.Include(Error<&NoParentNode>(std::source_location{}));
    EXPECT_EQ(GetErrorMessage(outer), "Can't get param a: b: No parent node on requested XML element");
    EXPECT_EQ(GetErrorText(outer), "NoParentNode No parent node on requested XML element");
    EXPECT_EQ(GetErrorText(ExTraceableBase<ExDefault>("", "plain")), "plain");
}

} // namespace
