#include "log4cpp_additions/configure.h"
#include "tests/support/support.h"

#include <boost/algorithm/string/replace.hpp>
#include <log4cpp/Category.hh>
#include <log4cpp/Configurator.hh>

#include <sys/stat.h>

namespace {

using namespace test_support;

class Configure : public testing::Test {
protected:
    void TearDown() override { log4cpp::Category::shutdown(); }

    /// "${DIR}" in the text is the test's folder.
    void configure(const std::string& text, std::map<std::string, std::string> variables = {}) const {
        variables["DIR"] = dir.path();
        log4cpp_additions::configure(dir.write("log4cpp.properties", text), variables,
                                     {.fileName = "", .descriptor = -1});
    }

    TempDir dir;
};

TEST_F(Configure, EveryTypeWorksAndNobodyElseReadsTheFiles) {
    for (const char* name : {"n.log", "e.log"}) {
        fs::permissions(dir.write(name, "old\n"), fs::perms(0600));
    }
    const mode_t before = umask(0);
    configure(
        boost::replace_all_copy(readFile(SOURCE_FOLDER "/tests/data/appenders.properties"), "\n", "\r\n"));
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    log4cpp::Category::getInstance("any").info("older than two files hold");
    log4cpp::Category::getInstance("any").info("first, long line");
    log4cpp::Category::getInstance("any").warn("seen");
    log4cpp::Category::getInstance("any.not").error("only there");
    umask(before);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with(" WARN any : seen\n"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\x1b[33mseen\n\x1b[0;39m");
    const std::tuple<const char*, std::string, fs::perms> files[] = {
        {"f.log", "WARN    : seen\n", fs::perms(0640)},
        {"f.log.1", "INFO    : first, long line\n", fs::perms(0640)},
        {"d.log", "INFO    : older than two files hold\nINFO    : first, long line\nWARN    : seen\n",
         fs::perms(0640)},
        {"n.log", "only there\n", fs::perms(0600)},
        {"e.log", "old\nseen\n", fs::perms(0600)},
    };
    for (const auto& [name, content, mode] : files) {
        EXPECT_EQ(readFile(dir.path(name)), content) << name;
        EXPECT_EQ(fs::status(dir.path(name)).permissions(), mode) << name;
    }
    EXPECT_FALSE(fs::exists(dir.path("f.log.2")));
    log4cpp::Category::getInstance("big").info(std::string((10 << 20) - 2, 'x')); // and a line end
    EXPECT_FALSE(fs::exists(dir.path("b.log.1")));
    log4cpp::Category::getInstance("big").info("");
    EXPECT_TRUE(fs::exists(dir.path("b.log.1")));
}

/// A file appender to which only its pattern is missing.
const std::string kFile = "rootCategory=INFO,F\nappender.F=FileAppender\nappender.F.fileName=${DIR}/${NAME}\n"
                          "appender.F.layout=PatternLayout\nappender.F.layout.ConversionPattern=";

TEST_F(Configure, VariablesWinOverTheFileAndTheFileOverTheEnvironmentAndHoldAnyText) {
    const ScopedEnv inBoth("IN_BOTH", "environment");
    const ScopedEnv inOne("IN_ONE", "environment");
    const std::string pattern = "${IN_BOTH} ${IN_ONE} [${NONE}] ${NAME}${${}a} ${open\n";
    const std::string below =
        "DIR=/none\nlog4j.IN_BOTH=${LOWER}+${IN_ONE}\nLOWER=file\nIN_ONE=own ${IN_ONE}\n";
    for (const std::string name : {"a#b", "${DIR}", "${", " \nrootCategory=ERROR\t", "\xff\x01 \\"}) {
        configure(kFile + pattern + below, {{"NAME", name}});
        log4cpp::Category::getRoot().info("m");
        EXPECT_EQ(readFile(dir.path(name)),
                  "file+own environment own environment [] " + name + "${a} ${open");
    }
}

TEST_F(Configure, ABrokenFileRaisesAndLeavesTheCategoriesAsTheyWere) {
    std::string growing = "z=z\n";
    for (char c = 'a'; c < 'z'; ++c) {
        const std::string next = std::string("${") + static_cast<char>(c + 1) + "}";
        growing += c + ("=" + next + next + "\n");
    }
    const std::string console = "rootCategory=INFO,C\nappender.C=ConsoleAppender\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", "Unable to find category: rootCategory"},
        {"rootCategory=INFO,Z\n" + kFile, "Appender 'Z' not found for category 'rootCategory'"},
        {kFile + "%m\ncategory.x=LOUD,F\n", "unknown priority name: 'LOUD' for category 'x'"},
        {kFile + "%m\nappender.Z=NoSuchAppender\n", "Appender 'Z' has unknown type 'NoSuchAppender'"},
        {kFile + "%m\nappender.Z.fileName=z\n", "partial appender definition : appender.Z.fileName"},
        {kFile + "%m\nappender.F.threshold=LOUD\n",
         "unknown priority name: 'LOUD' for threshold of appender 'F'"},
        {console, "Missing layout property for appender 'C'"},
        {console + "appender.C.target=x\n", "Appender 'C' has invalid target 'x'"},
        {growing, "Value too long: ${"},
    };
    for (const auto& [text, message] : cases) {
        const auto broken = [&, &text = text] { configure(text, {{"NAME", "f.log"}}); };
        EXPECT_THAT(thrownText<log4cpp::ConfigureFailure>(broken), StartsWith(message));
        EXPECT_TRUE(log4cpp::Category::getRoot().getAllAppenders().empty()) << text;
    }
}

} // namespace
