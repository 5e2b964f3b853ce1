#include "lib/runtime/bsa_conf.h"
#include "lib/runtime/bsa_conf_table.h"
#include "lib/runtime/low_level_log.h"
#include "tests/support/support.h"

#include <algorithm>

#include <syslog.h>

namespace {

using namespace test_support;

/// Loads a file of this content. Its pairs in their order, each as "name=value;", and what was logged.
Outcome load(const std::string& content) {
    const TempDir dir;
    const std::string file = dir.write("bsa.conf", content);
    return inChild([&] {
        LogInit(nullptr, 7, LOG_USER, LOG_PERROR, "test");
        BsaConf conf{};
        bsaConfLoad(file.c_str(), &conf);
        for (size_t i = 0; i < conf.count; ++i) {
            printf("%s=%s;", conf.entries[i].name, conf.entries[i].value);
        }
    });
}

TEST(BsaConfFile, EachLineGivesItsValueOrIsToldAndLeftOut) {
    const std::string noSpace = "\nExpected a space after variable name\n";
    const std::string noValue = "\nExpected a value";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"NAME abc\n", "NAME=abc;", ""},
        {"NAME abc \n", "NAME=abc \n;", ""}, // a single blank at the end keeps the line feed
        {"NAME abc # x\n", "NAME=abc;", ""},
        {"\t _a_1 \t \"q\" \\\r\n", "_a_1=\"q\" \\\r\n;", ""},
        {"NAME first\nNAME second\n", "NAME=second;", ""},
        {"NAME=value\n", "", noSpace},
        {"NAME  # x\n", "", noValue},
    };
    for (const auto& [line, pairs, reason] : cases) {
        const auto loaded = load("# comment\n\n  \n\t#\nA 1\n" + line);
        EXPECT_EQ(loaded.out, "A=1;" + pairs) << line;
        EXPECT_EQ(loaded.err.empty(), reason.empty()) << loaded.err;
        EXPECT_THAT(loaded.err, HasSubstr(reason.empty() ? "" : "definition " + line + reason));
    }
}

TEST(BsaConfFile, ManyVariablesAreKeptInOrder) {
    std::string content;
    std::string expected;
    for (int i = 10; i < 91; ++i) {
        content += "V" + std::to_string(10 + i * 17 % 81) + " value\n";
        expected += "V" + std::to_string(i) + "=value;";
    }
    EXPECT_EQ(load(content + content).out, expected);
}

TEST(BsaConf, EveryVariableHasItsNumberAndItsDefault) {
    const auto child = inChild([] {
        for (unsigned row = 0; row < kBsaConfRows; ++row) {
            printf("%s %s\n", bsaConfNames[row], bsaConfGetById(row));
        }
    });
    EXPECT_EQ(child.out, readFile(SOURCE_FOLDER "/tests/data/bsa_conf.txt"));
}

TEST(BsaConf, ServesDefaultsUntilTheFileIsThereAndNeverReadsItAgain) {
    const TempDir dir;
    const auto child = inChild([&] {
        fs::current_path(dir.path()); // where this program's configuration file is
        printf("%s|", bsaConfGetById(17));
        dir.write("bsa.conf", "OTHER o\nDUMP_D /dumps\n");
        printf("%s|%s|", bsaConfGetById(17), bsaConfGet("OTHER"));
        dir.write("bsa.conf", "DUMP_TMP_D /changed\n");
        printf("%s|%s|", bsaConfGetById(18), bsaConfGetDefault("DUMP_D"));
        printf("%s|", bsaConfGetDefault("_MIN_POSSIBLE_BSA_CONF_VAR_NAME"));
        for (const char* unknown : {"OTHER", "_MAX_POSSIBLE_BSA_CONF_VAR_NAME"}) {
            printf("%d", bsaConfGetDefault(unknown) == nullptr);
        }
    });
    EXPECT_EQ(child.out, "/var/lib/bsa/dumps|/dumps|o|/tmp|/dumps|_MIN_POSSIBLE_BSA_CONF_VAR_VALUE|11");
}

TEST(LowLevelLog, TargetAndLevelChooseWhereLinesGo) {
    const std::tuple<const char*, int, const char*, std::string, std::string> cases[] = {
        {nullptr, 0, "7", "0", "0"}, // not initialised
        {"Console", 4, "7", "01234", "01234"},
        {"STDERR", 8 + 3, "7", "", "01234567"}, // 8 lets the environment raise the level
        {"STDERR", 8 + 3, "2", "", "0123"},
        {"STDERR", 8 + 3, "12", "", "0123"},
    };
    for (const auto& [target, level, variable, out, err] : cases) {
        const ScopedEnv env("BRASK_LOG_LEVEL", variable);
        auto child = inChild([&] {
            if (target != nullptr) {
                LogInit(target, level, 0, 0, nullptr);
            }
            for (int priority = 0; priority <= 12; ++priority) {
                logWrite(priority, "%d", priority);
            }
        });
        std::erase(child.out, '\n');
        std::erase(child.err, '\n');
        EXPECT_EQ(child.out + "|" + child.err, out + "|" + err) << level << " with " << variable;
    }
}

TEST(LowLevelLog, SyslogLinesCarryTheTraceIdThatIsHandedDownAndAreCutAtTheBuffer) {
    const ScopedEnv none("BRASK_LOG_TRACE_ID", std::nullopt);
    const auto child = inChild([] {
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR, "tool");
        const bool isSet = getenv("BRASK_LOG_TRACE_ID") != nullptr;
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR | kLogTraceId, "tool");
        logWrite(LOG_NOTICE, "above the threshold");
        logWrite(LOG_WARNING, "m");
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR, "tool");
        logWrite(LOG_WARNING, "n");
        printf("%sR%d %s", isSet ? "at once " : "", getpid(), getenv("BRASK_LOG_TRACE_ID"));
        setenv("BRASK_LOG_TRACE_ID", "T42", 1);
        LogInit(nullptr, LOG_WARNING, LOG_USER, LOG_PERROR | kLogTraceId, "tool");
        logWrite(LOG_WARNING, "%s", std::string(9000, 'x').c_str());
    });
    const std::string id = child.out.substr(child.out.find(' ') + 1);
    EXPECT_EQ(child.out, id + " " + id);
    EXPECT_THAT(child.err, MatchesRegex("[^\n]*]: " + id + ": m\n[^\n]*]: n\n[^\n]*]: T42: x*\n"));
    EXPECT_EQ(std::count(child.err.begin(), child.err.end(), 'x'), 8191 - 5);
}

TEST(ErrorExit, AMessageThatCannotBeFormattedStillEndsTheProcessAndCodeZeroDoesNot) {
    const auto child = inChild([] {
        const wchar_t noCharacter[] = {0x7fffffff, 0};
        errno = ENOENT;
        ErrorExit(3, "%ls", noCharacter);
    });
    EXPECT_EQ(child.status, 3);
    EXPECT_EQ(child.err, "runtime_tests: \nSystem error 2: No such file or directory\n");
    const std::string text(5000, 'x');
    const auto returning = inChild([&] {
        errno = 0;
        ErrorExit(0, "%s", text.c_str());
        printf("back");
    });
    EXPECT_EQ(returning.out, "runtime_tests: " + text + "\nback");
}

} // namespace
