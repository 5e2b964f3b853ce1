#include "log4cpp_additions/pattern.h"
#include "tests/support/support.h"

namespace {

using namespace test_support;
using log4cpp_additions::ColorPatternLayout;

TEST(ColorPatternLayout, FormatsAsTheStockLayoutBesideItsOwnSpecifiers) {
    const std::string pid = std::to_string(getpid());
    const std::tuple<std::string, int, std::string> cases[] = {
        {"%C%m", 0, "\x1b[31m\x1b[1mtext\x1b[0;39m"},
        {"%C%m", 398, "\x1b[31mtext\x1b[0;39m"},
        {"%C%m", 399, "\x1b[33mtext\x1b[0;39m"},
        {"%C%m", 5000, "\x1b[30m\x1b[1mtext\x1b[0;39m"},
        {"a%Cb%Cc%m%n", 600, "a\x1b[37mb\x1b[37mctext\n\x1b[0;39m"}, // one reset at the very end
        {"%-7p|%6c|%.1m%6m|%%C", 600, "INFO   |   cat|t  text|%C"},
        {"[%P]%m%-12P|%.1P", 600,
         "[" + pid + "]text" + pid + std::string(12 - pid.size(), ' ') + "|" + pid.substr(0, 1)},
        {"%d{%C}", 600, "20"}, // strftime's century
    };
    for (const auto& [pattern, priority, expected] : cases) {
        ColorPatternLayout layout(pattern);
        EXPECT_EQ(layout.format(log4cpp::LoggingEvent("cat", "text", "", priority)), expected) << priority;
    }
    EXPECT_EQ(ColorPatternLayout("[%m]").format(log4cpp::LoggingEvent("cat", "", "", 600)), "[]");
    for (const char* pattern : {"%q", "%C%q", "%-C", "%.P", "%P%-m", "%99999999999P"}) {
        EXPECT_THROW(ColorPatternLayout{pattern}, log4cpp::ConfigureFailure) << pattern;
    }
}

} // namespace
