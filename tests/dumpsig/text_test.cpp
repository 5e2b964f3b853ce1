#include "dumpsig/output.h"
#include "dumpsig/progress.h"

#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

namespace {

using namespace dumpsig;

TEST(TextLine, HasOneLineAndNothingThatATerminalObeys) {
    EXPECT_EQ(oneLine("a\nb\r\nc\rd\n\r\n"), "a; b; c; d");
    EXPECT_EQ(oneLine("\x1b[31m\x07\x7f\tx\xc2\x9f\xc2o\xc2\xa0\xff\xc2\x80"),
              "?[31m??\tx?\xc2o\xc2\xa0\xff?");
}

TEST(TextLine, ABadByteBecomesOneReplacement) {
    const std::string whole = "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80|";
    // No UTF-8, cut off, a zero byte in disguise, too long for what they say, half of a pair of UTF-16, and
    // beyond the last character.
    const std::string bad =
        "\xff\xfe|\xe2\x82|\xc0\x80|\xe0\x80\xaf\xf0\x80\x80\xaf|\xed\xa0\x80|\xf4\x90\x80\x80\xf5|";
    EXPECT_EQ(toUtf8(whole + bad + whole),
              whole +
                  boost::replace_all_copy<std::string>("??|??|??|???????|???|?????|", "?", "\xEF\xBF\xBD") +
                  whole);
}

TEST(Progress, TellsWhatIsKnown) {
    constexpr std::uint64_t kGib = 1ULL << 30;
    EXPECT_EQ(progressLine(3 * kGib, 4 * kGib, 2), "3.0 GiB of 4.0 GiB, 75%, 1.5 GiB/s, 0:01 left");
    EXPECT_EQ(progressLine(kGib, 500 * kGib, 10), "1.0 GiB of 500.0 GiB, 0%, 102.4 MiB/s, 1:23:10 left");
    EXPECT_EQ(progressLine(999, std::nullopt, 1), "999 B, 999 B/s");
    EXPECT_EQ(progressLine(kGib << 22, std::nullopt, 1), "4.0 PiB, 4.0 PiB/s");
    EXPECT_EQ(progressLine(0, 1024 * 1024 - 1, 1), "0 B of 1.0 MiB, 0%, 0 B/s");
    EXPECT_EQ(progressLine(0, 0, 1), "0 B, 0 B/s");
    EXPECT_EQ(progressLine(20, 10, 1), "10 B of 10 B, 100%, 20 B/s, 0:00 left"); // it grew
}

} // namespace
