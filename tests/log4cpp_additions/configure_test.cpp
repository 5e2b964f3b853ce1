#include "log4cpp_additions/configure.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <log4cpp/Category.hh>
#include <log4cpp/Configurator.hh>

#include <regex>

namespace {

class Configure : public testing::Test {
protected:
    void TearDown() override { log4cpp::Category::shutdown(); }

    /// "${DIR}" in the text is the test's folder. Each "F" is a new appender's name: log4cpp never frees an
    /// appender whose name another one takes over.
    void configure(const std::string& text, std::map<std::string, std::string> variables = {}) const {
        static int number = 0;
        const std::string own =
            std::regex_replace(text, std::regex("\\bF\\b"), "F" + std::to_string(++number));
        variables["DIR"] = dir.path();
        log4cpp_additions::configure(dir.write("log4cpp.properties", own), variables);
    }

    test_support::TempDir dir;
};

TEST_F(Configure, StockAppendersWorkBesideTheStandardErrorOne) {
    configure("rootCategory=DEBUG, F, O, S\r\nappender.O=ConsoleAppender\r\nappender.O.layout=BasicLayout\r\n"
              "appender.S=org.apache.log4j.StderrAppender\r\nappender.S.threshold=WARN\r\n"
              "appender.S.layout=org.apache.log4j.PatternLayout\r\n"
              "appender.S.layout.ConversionPattern=%C%m%n # coloured\r\n"
              "appender.F=RollingFileAppender\r\nappender.F.fileName=${DIR}/f.log\r\n"
              "appender.F.maxFileSize=20\r\nappender.F.layout=SimpleLayout\r\n");
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    log4cpp::Category::getInstance("any").info("first, long line");
    log4cpp::Category::getInstance("any").warn("seen");
    EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with(" WARN any : seen\n"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\x1b[33mseen\n\x1b[0;39m");
    EXPECT_EQ(test_support::readFile(dir.path("f.log")), "WARN    : seen\n");
    EXPECT_EQ(test_support::readFile(dir.path("f.log.1")), "INFO    : first, long line\n");
}

/// A file appender to which only its pattern is missing.
const std::string kFile = "rootCategory=INFO,F\nappender.F=FileAppender\nappender.F.fileName=${DIR}/${NAME}\n"
                          "appender.F.layout=PatternLayout\nappender.F.layout.ConversionPattern=";

TEST_F(Configure, VariablesWinOverTheFileAndTheFileOverTheEnvironmentAndHoldAnyText) {
    const test_support::ScopedEnv inBoth("IN_BOTH", "environment");
    const test_support::ScopedEnv inOne("IN_ONE", "environment");
    const std::string pattern = "${IN_BOTH} ${IN_ONE} [${NONE}] ${NAME}${${}a} ${open\n";
    for (const std::string name : {"a#b", "${DIR}", "${", " \nrootCategory=ERROR\t", "\xff\x01 \\"}) {
        configure("DIR=/none\nlog4j.IN_BOTH=file\n" + kFile + pattern, {{"NAME", name}});
        log4cpp::Category::getRoot().info("m");
        EXPECT_EQ(test_support::readFile(dir.path(name)), "file environment [] " + name + "${a} ${open");
    }
}

TEST_F(Configure, ABrokenFileRaisesAndLeavesNoAppenderBehind) {
    const std::string cases[] = {
        "",
        "log4j.rootCategory=LOUD,F\n" + kFile + "%m\n",
        kFile + "%m\nappender.Z=NoSuchAppender\n",
        kFile + "%C%q\n",
    };
    for (const std::string& text : cases) {
        EXPECT_THROW(configure(text, {{"NAME", "f.log"}}), log4cpp::ConfigureFailure) << text;
        EXPECT_TRUE(log4cpp::Category::getRoot().getAllAppenders().empty()) << text;
    }
}

} // namespace
