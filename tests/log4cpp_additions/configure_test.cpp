#include "log4cpp_additions/configure.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <log4cpp/Category.hh>
#include <log4cpp/Configurator.hh>

#include <algorithm>
#include <filesystem>
#include <regex>

#include <unistd.h>

namespace {

using test_support::readFile;
using test_support::ScopedEnv;
using test_support::TempDir;

using Variables = std::map<std::string, std::string>;

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

std::string environment() {
    std::string text;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        text += std::string(*entry) + "\n";
    }
    return text;
}

class Configure : public testing::Test {
protected:
    void TearDown() override { log4cpp::Category::shutdown(); }

    /// Each "F" is a new appender's name: log4cpp never frees an appender whose name another one takes over.
    void configure(const std::string& text, const Variables& variables = {}) const {
        static int number = 0;
        const std::string name = "F" + std::to_string(++number);
        log4cpp_additions::configure(
            dir.write("log4cpp.properties", std::regex_replace(text, std::regex("\\bF\\b"), name)),
            variables);
    }

    TempDir dir;
};

TEST_F(Configure, StderrAppenderWritesToStandardErrorWithItsLayoutAndThreshold) {
    configure("log4j.rootCategory=DEBUG, S\n"
              "log4j.appender.S=org.apache.log4j.StderrAppender\n"
              "log4j.appender.S.target=stdout\n"
              "log4j.appender.S.threshold=WARN\n"
              "log4j.appender.S.layout=org.apache.log4j.PatternLayout\n"
              "log4j.appender.S.layout.ConversionPattern=%C%P %m%n # coloured\n");
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    log4cpp::Category::getInstance("any").info("too low");
    log4cpp::Category::getInstance("any").warn("seen");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\x1b[33m" + std::to_string(getpid()) + " seen\n\x1b[0;39m");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Configure, StockAppendersAndLayoutsKeepWorking) {
    configure("rootCategory=INFO, F, O\r\n"
              "log4cpp.category.quiet=ERROR, R\r\n"
              "additivity.quiet=false\r\n"
              "appender.F=FileAppender\r\n"
              "appender.F.fileName=${DIR}/f.log\r\n"
              "appender.F.append=false\r\n"
              "appender.F.layout=SimpleLayout\r\n"
              "appender.R=RollingFileAppender\r\n"
              "appender.R.fileName=${DIR}/r.log\r\n"
              "appender.R.maxFileSize=10\r\n"
              "appender.R.maxBackupIndex=1\r\n"
              "appender.R.layout=PatternLayout\r\n"
              "appender.O=ConsoleAppender\r\n"
              "appender.O.layout=BasicLayout\r\n"
              "appender.L=LocalSyslogAppender\r\n"
              "appender.L.syslogName=test\r\n"
              "appender.L.layout=PatternLayout\r\n"
              "appender.L.layout.ConversionPattern=%P %m\r\n",
              {{"DIR", dir.path()}});
    testing::internal::CaptureStdout();
    log4cpp::Category::getInstance("any").info("hello");
    log4cpp::Category& quiet = log4cpp::Category::getInstance("quiet");
    quiet.info("not seen");
    quiet.error("first, long line");
    quiet.error("second, long line");
    quiet.error("third");
    EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with(" INFO any : hello\n"));
    EXPECT_EQ(readFile(dir.path("f.log")), "INFO    : hello\n");
    EXPECT_EQ(readFile(dir.path("r.log")), "third\n");
    EXPECT_EQ(readFile(dir.path("r.log.1")), "second, long line\n");
}

TEST_F(Configure, VariablesWinOverTheFileAndTheFileOverTheEnvironment) {
    const ScopedEnv everywhere("EVERYWHERE", "environment");
    const ScopedEnv alsoInFile("IN_FILE", "environment");
    const ScopedEnv environmentOnly("IN_ENVIRONMENT", "environment");
    const ScopedEnv nowhere("NOWHERE", std::nullopt);
    configure("EVERYWHERE=file\nlog4j.IN_FILE=file\nIN_FILE=repeated\n"
              "rootCategory=INFO,F\n"
              "appender.F=FileAppender\n"
              "appender.F.fileName=${DIR}/f.log\n"
              "appender.F.layout=PatternLayout\n"
              "appender.F.layout.ConversionPattern="
              "${EVERYWHERE} ${IN_FILE} ${IN_ENVIRONMENT} [${NOWHERE}${LATER}] ${NESTED} ${${}a} ${open\n"
              "LATER=file\n",
              {{"DIR", dir.path()}, {"EVERYWHERE", "variable"}, {"NESTED", "${DIR}"}, {"UNNAMED", "x"}});
    log4cpp::Category::getRoot().info("m");
    EXPECT_EQ(readFile(dir.path("f.log")), "variable file environment [] ${DIR} ${a} ${open");
}

TEST_F(Configure, AnyTextSurvivesInAVariable) {
    const ScopedEnv taken("LOG4CPP_ADDITIONS_0", "taken");
    const std::string before = environment();
    for (const std::string name :
         {"a#b", " outer blanks\t", "${HOME}", "${", "a\nrootCategory=ERROR", "a=b", "\xff\x01 \\", "#"}) {
        configure("rootCategory=INFO,F\n"
                  "appender.F=FileAppender\n"
                  "appender.F.fileName=${FILE_NAME}\n"
                  "appender.F.layout=PatternLayout\n"
                  "appender.F.layout.ConversionPattern=%m\n",
                  {{"FILE_NAME", dir.path() + "/" + name}});
        log4cpp::Category::getRoot().info("line");
        EXPECT_EQ(readFile(dir.path(name)), "line") << name;
    }
    EXPECT_EQ(environment(), before);
}

TEST_F(Configure, AMissingFileIsNamed) {
    try {
        log4cpp_additions::configure(dir.path("none"), {});
        FAIL();
    } catch (const log4cpp::ConfigureFailure& e) {
        EXPECT_EQ(std::string(e.what()), "File " + dir.path("none") + " does not exist");
    }
}

TEST_F(Configure, ABrokenFileRaisesAndLeavesNothingBehind) {
    const std::string appender = "appender.F=FileAppender\nappender.F.fileName=" + dir.path("f.log") + "\n";
    const std::string layout = "appender.F.layout=PatternLayout\n";
    const std::pair<const char*, std::string> cases[] = {
        {"empty file", ""},
        {"no root category", appender + layout},
        {"unknown priority", "rootCategory=LOUD,F\n" + appender + layout},
        {"unknown appender type", "rootCategory=INFO,F\nappender.Z=NoSuchAppender\n" + appender + layout},
        {"appender not defined", "rootCategory=INFO,F,G\n" + appender + layout},
        {"no layout", "rootCategory=INFO,F\n" + appender},
        {"bad pattern",
         "rootCategory=INFO,F\n" + appender + layout + "appender.F.layout.ConversionPattern=%C%q\n"},
    };
    const std::size_t before = openDescriptors();
    for (const auto& [what, text] : cases) {
        EXPECT_THROW(configure(text), log4cpp::ConfigureFailure) << what;
        EXPECT_EQ(openDescriptors(), before) << what;
        EXPECT_TRUE(log4cpp::Category::getRoot().getAllAppenders().empty()) << what;
    }
}

} // namespace
