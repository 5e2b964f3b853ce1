#include "dumpsig/command_line.h"
#include "dumpsig/output.h"
#include "tests/support/support.h"

#include <boost/algorithm/string/split.hpp>

#include <algorithm>

namespace {

using namespace dumpsig;
using namespace test_support;

/// Parses the words of a line, with one blank between them.
CommandLine parse(const std::string& line) {
    std::vector<std::string> words;
    boost::split(words, line.empty() ? "dumpsig" : "dumpsig " + line, [](char c) { return c == ' '; });
    std::vector<const char*> argv(words.size());
    std::transform(words.begin(), words.end(), argv.begin(),
                   [](const std::string& word) { return word.c_str(); });
    return parseCommandLine(static_cast<int>(argv.size()), argv.data());
}

TEST(CommandLine, FilesAreWhateverIsNoOption) {
    // Names that the parsing library, or a command of the same name, would lay claim to.
    EXPECT_THAT(parse("verify info -k [k] [a,b] {} %% ++  -").files,
                ElementsAre("info", "[a,b]", "{}", "%%", "./++", "", "-"));
    EXPECT_THAT(parse("verify a -k x b -ky -- -q -- -").files, ElementsAre("a", "b", "-q", "--", "-"));
    EXPECT_THAT(parse("cat -k [k] a --key l").keys, ElementsAre("[k]", "l"));
}

TEST(CommandLine, TheLastOfTwoContraryOptionsCounts) {
    EXPECT_EQ(parse("verify a").progress, std::nullopt);
    EXPECT_EQ(parse("verify --progress a --no-progress").progress, false);
    EXPECT_EQ(parse("cat --no-progress a --progress").progress, true);
}

TEST(CommandLine, AMistakeIsRefused) {
    for (const std::string& mistake : split(
             "|nothing a|-q verify a|verify|verify --|verify --bad a|verify -z a|verify -1 a|verify a -k|"
             "verify --json=false a|verify -q --json a|verify - -|verify - -- a|verify -o x a|info -k x a|"
             "cat --json a|fingerprint|strip a|strip -o  a|strip -o x a b|strip -o x -o y a|"
             "strip -o x --in-place a|strip --in-place -|strip --in-place --force a|strip -o - --force a")) {
        EXPECT_THROW(parse(mistake), Error<&UsageError>) << mistake;
    }
}

} // namespace
