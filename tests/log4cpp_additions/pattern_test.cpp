#include "log4cpp_additions/pattern.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using log4cpp_additions::ColorPatternLayout;

std::string render(const std::string& pattern, log4cpp::Priority::Value priority = log4cpp::Priority::INFO) {
    return ColorPatternLayout(pattern).format(log4cpp::LoggingEvent("cat", "text", "", priority));
}

TEST(ColorPatternLayout, ColoursTheLineByItsPriority) {
    struct Case {
        int priority;
        const char* escape;
    };

    const Case cases[] = {{-1, "\x1b[31m\x1b[1m"},  {0, "\x1b[31m\x1b[1m"},   {98, "\x1b[31m\x1b[1m"},
                          {99, "\x1b[31m\x1b[1m"},  {100, "\x1b[31m\x1b[1m"}, {200, "\x1b[31m"},
                          {300, "\x1b[31m"},        {398, "\x1b[31m"},        {399, "\x1b[33m"},
                          {400, "\x1b[33m"},        {500, "\x1b[34m"},        {600, "\x1b[37m"},
                          {700, "\x1b[32m"},        {800, "\x1b[37m"},        {898, "\x1b[37m"},
                          {899, "\x1b[30m\x1b[1m"}, {900, "\x1b[30m\x1b[1m"}, {5000, "\x1b[30m\x1b[1m"}};
    for (const Case& c : cases) {
        EXPECT_EQ(render("%C%m", c.priority), std::string(c.escape) + "text\x1b[0;39m") << c.priority;
    }
}

TEST(ColorPatternLayout, OneResetStandsAtTheVeryEndHoweverManyColours) {
    EXPECT_EQ(render("a%Cb%Cc%m%n"), "a\x1b[37mb\x1b[37mctext\n\x1b[0;39m");
}

TEST(ColorPatternLayout, FormatsAsTheStockLayoutBesideItsOwnSpecifiers) {
    const std::string pid = std::to_string(getpid());
    const std::string wide(12 - pid.size(), ' ');
    const std::pair<const char*, std::string> cases[] = {
        {"%m%n", "text\n"},
        {"%-7p|%6c|%.2m", "INFO   |   cat|te"},
        {"%%C %%P %m", "%C %P text"},
        {"[%P]%m[%P]", "[" + pid + "]text[" + pid + "]"},
        {"%12P|", wide + pid + "|"},
        {"%-12P|", pid + wide + "|"},
        {"%.1P|", pid.substr(0, 1) + "|"},
        {"%P{ignored}%m", pid + "text"},
        {"%d{%C}", "20"}, // strftime's century
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(render(pattern), expected) << pattern;
    }
}

TEST(ColorPatternLayout, RefusesWhatTheStockLayoutRefuses) {
    for (const char* pattern : {"%q", "%C%q", "%-C", "%.P", "%P%-m", "%99999999999P"}) {
        EXPECT_THROW(ColorPatternLayout{pattern}, log4cpp::ConfigureFailure) << pattern;
    }
}

TEST(ColorPatternLayout, AForkedChildShowsItsOwnProcessId) {
    ColorPatternLayout layout("%P");
    const pid_t child = fork();
    if (child == 0) {
        const std::string text = layout.format(log4cpp::LoggingEvent("", "", "", 600));
        _exit(text == std::to_string(getpid()) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace
