#include "commons/panel/backup_settings.h"
#include "commons/panel/product_paths.h"
#include "commons/panel/settings_parser.h"
#include "tests/commons/library_test.h"

#include <regex>
#include <sstream>

namespace {

using namespace test_support;

TEST(SettingsParser, ReadsEveryFormOfTheSyntax) {
    const std::pair<std::string, SettingsMap> cases[] = {
        {"\xEF\xBB\xBF[s]\nk=v", {{"s.k", "v"}}},
        {"a = 1\n[ ]\nb = 2", {{".a", "1"}, {".b", "2"}}},
        {"[s]\nk = 'a;b' junk\nl = a;b\n", {{"s.k", "a;b"}, {"s.l", "a"}}},
        {"[s] junk\nk = \"a\\\" junk = 2 ; x\nl=1", {{"s.k", "a\\"}, {"s.l", "1"}}},
        {"[s]\r\nk\nk = a b\t\r\n\r\n  ; c\r\nl =\r\n", {{"s.k", "a b"}, {"s.l", ""}}},
        {"[ s t\t]\nk[x] = 1\nk[ ' y ' ]=2\nk [\"z\"] 3 = 3", {{"s t.k.x", "1"}, {"s t.k. y ", "2"}}},
        {"[\"s]\"]\nk=1\n[ 't' ]\nk=2\n[\"s]\"]\nk=3", {{"s].k", "3"}, {"t.k", "2"}}},
        {"[s]\n#k = #1=2 \"q\"\n=x\nK=1\n", {{"s.#k", "#1=2 \"q\""}, {"s.", "x"}, {"s.K", "1"}}}};
    SettingsParser parser; // one for all, which keeps what it has read
    SettingsMap all;
    for (const auto& [text, expected] : cases) {
        for (const auto& [name, value] : expected) {
            all[name] = value;
        }
        EXPECT_EQ(parser.parse(text), all) << text;
    }
    EXPECT_EQ(settingsToString({{"a.b", "1"}, {"c", "d=e"}}), "a.b=1\nc=d=e");
}

TEST(SettingsParser, TellsWhereAndWhatItExpected) {
    const std::pair<std::string, std::string> cases[] = {
        {"a=1\n\n[sect \nb", "']', found '<EOL>': Line 3, column 7"},
        {"\xEF\xBB\xBF[s", "']', found '<EOF>': Line 1, column 3"},
        {"\nk = 'a\"\n'", "''', found '<EOL>': Line 2, column 8"}};
    SettingsParser parser;

    class Pipe : public std::stringbuf {
        using std::stringbuf::stringbuf;

    protected:
        pos_type seekpos(pos_type /*to*/, std::ios::openmode /*which*/) override { return -1; }
    } pipe("[s]");

    const std::pair<std::streambuf*, std::string> broken[] = {{nullptr, "Unable to read characters"},
                                                              {&pipe, "Unable to return input position"}};
    for (const auto& [buffer, message] : broken) {
        std::istream stream(buffer);
        EXPECT_THAT(thrownText<std::system_error>([&] { parser.parse(stream); }), StartsWith(message));
    }
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(thrownText<ParseError>([&, &text = text] { parser.parse(text); }),
                  "Parse error: Expected " + message);
    }
}

// What the panel's other tools know by heart. The root ends in a slash, so that joining and concatenation
// differ.
TEST(ProductPaths, AreThoseOfTheDataFile) {
    const FixedParams params{{{"PRODUCT_ROOT_D", "/p/"}}};
#define PATH(call) std::string(#call " = ") + (call) + "\n"
    const std::string paths =
        PATH(getAdminBinPath("n")) + PATH(getAdminConfDir()) + PATH(getAdminSbinPath("n")) +
        PATH(getAgentsDir()) + PATH(getApacheRestartLock()) + PATH(getApiCliScript("n")) +
        PATH(getApsPackagesDir()) + PATH(getBackupScript("n")) + PATH(getBmmConfigFile()) +
        PATH(getBmmDir()) + PATH(getBmmFile("n")) + PATH(getBmmLogDir()) + PATH(getBmmTmpDir()) +
        PATH(getBraskXsdFile()) + PATH(getChrootShellPath()) + PATH(getCorrectAwStatisticsScript()) +
        PATH(getCustomTemplatesDir()) + PATH(getCustomizationsFile()) + PATH(getDumpingStatusFile("n")) +
        PATH(getEngineRunCommand().at(0)) + PATH(getHealthConfigFile()) + PATH(getInitDir()) +
        PATH(getLibxmlProxyPath()) + PATH(getLockDir()) + PATH(getMailmanArchPath()) +
        PATH(getMailmanVarDir()) + PATH(getMailnamesDir()) + PATH(getMb2mdScript()) + PATH(getMchkPath()) +
        PATH(getModuleVarPath("n")) + PATH(getMysqlBinDir()) + PATH(getPgsqlBinDir()) +
        PATH(getProductLibDir()) + PATH(getProductRootDir()) + PATH(getQaStatusFile()) +
        PATH(getRestoreSpecificationXsdFile()) + PATH(getSaConvertScript()) + PATH(getSiteIsolationFile()) +
        PATH(getSubPath("a", "b")) + PATH(getTestMetaFile()) + PATH(getVarDir()) +
        PATH(getVhostSubPath("n", "")) + PATH(getVhostSubPath("n", "/base")) + PATH(getVhostsDir()) +
        PATH(joinPath("/a/", "/b")) + PATH(joinPath("a", "b")) + PATH(joinPath("", "b")) +
        PATH(joinPath("a", ""));
#undef PATH
    EXPECT_EQ(paths, readFile(SOURCE_FOLDER "/tests/data/product_paths.txt"));
    EXPECT_THAT(getMysqlClientPath() + getMysqlDumpPath(),
                MatchesRegex("/usr/bin/(mariadb|mysql)/usr/bin/(mariadb-|mysql)dump"));
}

TEST(SettingsParser, ANumberFitsItsTypeAndAWordIsFalseOrTrue) {
    const SettingsMap values{{"s.k", "4294967295"}, {"s.big", "18446744073709551615"}};
    EXPECT_EQ(getSetting(values, "s", "k", 1U), 4294967295U);
    EXPECT_EQ(getSetting(values, "s", "k", 1L) + getSetting(values, "s", "k", 1LL), 2 * 4294967295LL);
    EXPECT_EQ(getSetting(values, "s", "big", 1UL), 18446744073709551615UL);
    EXPECT_EQ(getSetting(values, "s", "big", 1ULL), 18446744073709551615ULL);
    EXPECT_THROW(getSetting(values, "s", "big", 1U), std::out_of_range);
    EXPECT_THROW(getSetting(values, "s", "k", 1), std::out_of_range);
    EXPECT_EQ(getSetting(values, "s", "none", 7), 7);
    for (const std::string& word : split("|0|No|OFF|false|on|n")) {
        const bool value = word.ends_with('n');
        EXPECT_EQ(getSetting(SettingsMap{{"s.k", word}}, "s", "k", !value), value) << word;
    }
}

/// Every value by its name, in order, as a settings file has it.
std::string describe(const BackupSettings::Values& values) {
    std::ostringstream text;
    text << std::boolalpha;
#define DESCRIBE(type, name, defaultValue) text << #name << " = " << values.name << "\n";
    BRASK_BACKUP_SETTINGS(DESCRIBE)
#undef DESCRIBE
    return text.str();
}

using BackupSettingsFile = LibraryTest;

TEST_F(BackupSettingsFile, OverridesWhatItNamesUpToABadNumberAndNeverFailsTheCaller) {
    BackupSettings::Values expected;
    expected.ftpMaxResumeAttempts = 1;
    std::string bytes = "[bmm]\n";
    for (int i = 0; i < 200000; ++i) {
        bytes += static_cast<char>(i % 251 * i % 241);
    }
    const std::pair<std::string, std::string> cases[] = {
        {"ftpKeepAlive = 9\n[bmm]\nftpMaxResumeAttempts = 1 ; s\nftpKeepAliveIdle = x", describe(expected)},
        {"[bmm]\nftpMaxResumeAttempts = 1\n[x\n", describe({})},
        {"[bmm]\narchiverMaxThreads = 4294967296", describe({})},
        {bytes, describe({})}};
    for (const auto& [text, values] : cases) {
        EXPECT_EQ(describe(BackupSettings(dir.write("panel.ini", text)).all()), values) << text;
    }
    EXPECT_EQ(describe(BackupSettings(dir.path("missing")).all()), describe({}));
    EXPECT_EQ(describe(BackupSettings(dir.path()).all()), describe({}));
    EXPECT_THAT(log.lines[1], EndsWith("default settings will be used instead. Details: stol"));
    EXPECT_THAT(log.lines[3], EndsWith("Parse error: Expected ']', found '<EOL>': Line 3, column 3"));
    EXPECT_THAT(log.lines[5], EndsWith("'4294967296' is out of range of 'unsigned int' type"));
}

TEST(ShippedSettingsFile, ListsEveryValueAtItsDefaultAndSetsNone) {
    const std::string text = readFile(SOURCE_FOLDER "/product/admin/conf/panel.ini");
    EXPECT_TRUE(SettingsParser().parse(text).empty());
    EXPECT_EQ(SettingsParser().parse(std::regex_replace(text, std::regex("(^|\n);(\\w+ = )"), "$1$2")),
              SettingsParser().parse("[bmm]\n" + describe({})));
}

TEST(ParamFromBSAStrategy, KnowsTheAccountAndWhatItsTableHas) {
    const ParamFromBSAStrategy source;
    EXPECT_EQ(source.getParam("BSAADM"), "bsaadm");
    EXPECT_THROW(source.getParam("UNKNOWN"), Error<&ParamError>);
    EXPECT_EQ(thrownText<Error<&ParamError>>([] { getBmmDir(); }),
              "Can't get param PRODUCT_ROOT_D: no parameter source is set");
}

} // namespace
