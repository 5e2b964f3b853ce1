#include "dumpsig/command_line.h"
#include "dumpsig/output.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>

namespace {

using namespace dumpsig;
using testing::ElementsAre;
using Words = std::vector<const char*>;

CommandLine parse(Words words) {
    words.insert(words.begin(), "dumpsig");
    return parseCommandLine(static_cast<int>(words.size()), words.data());
}

TEST(CommandLine, FilesAreWhateverIsNoOption) {
    // Names that the parsing library, or a command of the same name, would lay claim to.
    EXPECT_THAT(parse({"verify", "info", "-k", "[k]", "[a,b]", "{}", "%%", "++", "", "-"}).files,
                ElementsAre("info", "[a,b]", "{}", "%%", "./++", "", "-"));
    EXPECT_THAT(parse({"verify", "a", "-k", "x", "b", "-ky", "--", "-q", "--", "-"}).files,
                ElementsAre("a", "b", "-q", "--", "-"));
    EXPECT_THAT(parse({"cat", "-k", "[k]", "a", "--key", "l"}).keys, ElementsAre("[k]", "l"));
    EXPECT_THAT(parse({"fingerprint", "-", "a"}).files, ElementsAre("-", "a"));
}

TEST(CommandLine, TheLastOfTwoContraryOptionsCounts) {
    EXPECT_EQ(parse({"verify", "a"}).progress, std::nullopt);
    EXPECT_EQ(parse({"verify", "--progress", "a", "--no-progress"}).progress, false);
    EXPECT_EQ(parse({"cat", "--no-progress", "a", "--progress"}).progress, true);
}

TEST(CommandLine, AMistakeIsRefused) {
    const Words mistakes[] = {
        {},
        {"nothing", "a"},
        {"-q", "verify", "a"},
        {"verify"},
        {"verify", "--"},
        {"verify", "--bad", "a"},
        {"verify", "-z", "a"},
        {"verify", "-1", "a"},
        {"verify", "a", "-k"},
        {"verify", "--json=false", "a"},
        {"verify", "-q", "--json", "a"},
        {"verify", "-", "-"},
        {"verify", "-", "--", "a"},
        {"verify", "-o", "x", "a"},
        {"info", "-k", "x", "a"},
        {"cat", "--json", "a"},
        {"fingerprint"},
        {"strip", "a"},
        {"strip", "-o", "", "a"},
        {"strip", "-o", "x", "a", "b"},
        {"strip", "-o", "x", "-o", "y", "a"},
        {"strip", "-o", "x", "--in-place", "a"},
        {"strip", "--in-place", "-"},
        {"strip", "--in-place", "--force", "a"},
        {"strip", "-o", "-", "--force", "a"},
    };
    for (const Words& words : mistakes) {
        SCOPED_TRACE(testing::PrintToString(words));
        EXPECT_NE(test_support::thrownText<brask::Error<&UsageError>>([&] { parse(words); }), "");
    }
}

} // namespace
