#include "lib/runtime/bsa_conf.h"
#include "lib/runtime/bsa_conf_table.h"
#include "lib/runtime/low_level_log.h"
#include "tests/support/child.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>

#include <unistd.h>

namespace {

using namespace brask;
using test_support::inChild;
using test_support::TempDir;
using testing::ElementsAre;
using testing::IsEmpty;

/// Frees the slots in use. (bsaConfFree would walk the uncleared ones of a grown array too.)
struct FreeConf {
    void operator()(BsaConf* conf) const {
        for (size_t i = 0; i < conf->count; ++i) {
            free(conf->entries[i].name);
            free(conf->entries[i].value);
        }
        free(conf->entries);
        delete conf;
    }
};

using Conf = std::unique_ptr<BsaConf, FreeConf>;

std::vector<std::string> logged;

__attribute__((format(printf, 2, 3))) void recordLine(int priority, const char* format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    logged.push_back(std::to_string(priority) + "|" + text);
}

/// Loads files of its own and records the log.
class BsaConfFile : public testing::Test {
protected:
    void SetUp() override {
        logged.clear();
        logWrite = recordLine;
    }

    void TearDown() override { logWrite = previous; }

    std::map<std::string, std::string> load(const std::string& content) {
        conf.reset(new BsaConf{});
        EXPECT_EQ(bsaConfLoad(dir.write("bsa.conf", content).c_str(), conf.get()), 0);
        EXPECT_NE(conf->sorted, 0);
        std::map<std::string, std::string> pairs;
        for (size_t i = 0; i < conf->count; ++i) {
            pairs[conf->entries[i].name] = conf->entries[i].value;
        }
        EXPECT_EQ(pairs.size(), conf->count);
        return pairs;
    }

    TempDir dir;
    Conf conf;

private:
    decltype(logWrite) previous = logWrite;
};

TEST_F(BsaConfFile, AcceptedLinesGiveTheirValues) {
    const struct {
        const char* line;
        const char* name;
        const char* value;
    } cases[] = {
        {"NAME abc\n", "NAME", "abc"},
        {"NAME abc \n", "NAME", "abc \n"},
        {"NAME abc  \n", "NAME", "abc  "},
        {"NAME a\n", "NAME", "a"},
        {"NAME a b  c\n", "NAME", "a b  c"},
        {"NAME abc # x\n", "NAME", "abc"},
        {"NAME abc  # x\n", "NAME", "abc  "},
        {"NAME abc#x\n", "NAME", "abc"},
        {"NAME abc", "NAME", "abc"},
        {"\t NAME \t abc\r\n", "NAME", "abc\r\n"},
        {"1ABC x\n", "1ABC", "x"},
        {"_a_1 \"q\" \\\n", "_a_1", "\"q\" \\"},
        {"NAME first\nNAME second\n", "NAME", "second"},
    };

    for (const auto& c : cases) {
        EXPECT_THAT(load(c.line), ElementsAre(std::pair<const std::string, std::string>(c.name, c.value)))
            << c.line;
        EXPECT_THAT(logged, IsEmpty());
    }
}

TEST_F(BsaConfFile, RejectedLinesAreToldAndLeaveTheOthersAlone) {
    const std::string noSpace = "\nExpected a space after variable name\n";
    const std::string noValue = "\nExpected a value";
    const std::pair<std::string, std::string> cases[] = {
        {"NAME=value\n", "NAME=value\n" + noSpace},   {" =value\n", "=value\n" + noSpace},
        {"NA-ME value\n", "NA-ME value\n" + noSpace}, {" NAME\n", "NAME\n" + noValue},
        {"NAME  # x\n", "NAME  # x\n" + noValue},     {"NAME#x\n", "NAME#x\n" + noSpace},
    };
    for (const auto& [line, text] : cases) {
        logged.clear();
        EXPECT_EQ(load("A 1\n" + line + "B 2\n").size(), 2U) << line;
        EXPECT_THAT(logged, ElementsAre("12|Invalid variable definition " + text));
    }
    logged.clear();
    EXPECT_THAT(load("# comment\n\n  \n\t#\n"), IsEmpty());
    load("NAME");
    EXPECT_THAT(logged, ElementsAre("12|Invalid variable definition NAME" + noSpace));
}

TEST_F(BsaConfFile, ManyVariablesAreKeptInOrder) {
    std::string content;
    std::map<std::string, std::string> expected;
    for (int i = 0; i < 41; ++i) {
        const std::string name = "V" + std::to_string(i * 17 % 41);
        content += name + " old" + "\n" + name + " " + std::to_string(i) + "\n";
        expected[name] = std::to_string(i);
    }
    EXPECT_EQ(load(content), expected);
    EXPECT_EQ(conf->capacity, 80U);
    for (size_t i = 1; i < conf->count; ++i) {
        EXPECT_LT(std::string(conf->entries[i - 1].name), conf->entries[i].name);
    }
}

TEST_F(BsaConfFile, FilesThatCannotBeReadAreToldWithTheirReason) {
    auto* unread = static_cast<BsaConf*>(calloc(1, sizeof(BsaConf)));
    EXPECT_EQ(bsaConfLoad(dir.path("none").c_str(), unread), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(bsaConfLoad(dir.path().c_str(), unread), -1);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_THAT(logged, ElementsAre("12|unable to open configuration file " + dir.path("none") +
                                        ": No such file or directory\n",
                                    "12|Unable to read configuration file: Is a directory"));
    bsaConfFree(unread);
    bsaConfFree(nullptr);
}

/// What a look-up gave, null included.
void show(const char* value) {
    printf("%s|", value != nullptr ? value : "(null)");
}

TEST(BsaConf, ServesDefaultsUntilTheFileIsThereAndNeverReadsItAgain) {
    const TempDir dir;
    // This program's configuration file is "bsa.conf" in the working directory.
    const auto child = inChild([&] {
        if (chdir(dir.path().c_str()) != 0) {
            throw std::runtime_error("chdir");
        }
        show(bsaConfGet("DUMP_D"));
        show(bsaConfGetCached(17));
        show(bsaConfGetById(17));
        show(bsaConfGetDefault("PRODUCT_ROOT_D"));
        dir.write("bsa.conf", "OTHER o\nDUMP_D /dumps \nABC abc\n");
        show(bsaConfGetById(17));
        dir.write("bsa.conf", "DUMP_D /changed\nDUMP_TMP_D /changed\n");
        show(bsaConfGetById(17));
        show(bsaConfGetById(18));
        show(bsaConfGetDefault("DUMP_D"));
        show(bsaConfGet("OTHER"));
        show(bsaConfGet("ABC"));
        show(bsaConfGet("ABD"));
    });
    EXPECT_EQ(child.out, "(null)|(null)|/var/lib/bsa/dumps|" BRASK_PRODUCT_ROOT
                         "|/dumps \n|/dumps \n|/tmp|/dumps \n|o|abc|(null)|");
}

TEST(BsaConf, NamesOutsideTheTableHaveNoDefault) {
    const TempDir dir;
    const auto child = inChild([&] {
        if (chdir(dir.path().c_str()) != 0) {
            throw std::runtime_error("chdir");
        }
        dir.write("bsa.conf", "OTHER o\n");
        LogInit("stderr", 3, 0, 0, nullptr);
        show(bsaConfGetDefault("_MIN_POSSIBLE_BSA_CONF_VAR_NAME"));
        show(bsaConfGetDefault("_MAX_POSSIBLE_BSA_CONF_VAR_NAME"));
        show(bsaConfGetDefault("OTHER"));
    });
    EXPECT_EQ(child.out, "_MIN_POSSIBLE_BSA_CONF_VAR_VALUE|(null)|(null)|");
    EXPECT_EQ(child.err,
              "variable '_MAX_POSSIBLE_BSA_CONF_VAR_NAME' was found neither in bsa.conf, nor in compile-time "
              "defaults\nvariable 'OTHER' was found neither in bsa.conf, nor in compile-time defaults\n");
}

TEST(BsaConf, RowsAskedForByNumberAreThoseMeant) {
    EXPECT_STREQ(bsaConfNames[kMailnamesDir], "BRASK_MAILNAMES_D");
    EXPECT_STREQ(bsaConfNames[kMailmanVarDir], "MAILMAN_VAR_D");
    EXPECT_STREQ(bsaConfNames[kMailmanRootDir], "MAILMAN_ROOT_D");
    EXPECT_STREQ(bsaConfNames[kPgsqlBinDir], "PGSQL_BIN_D");
    EXPECT_STREQ(bsaConfNames[kMysqlBinDir], "MYSQL_BIN_D");
    EXPECT_STREQ(bsaConfNames[kVhostsDir], "HTTPD_VHOSTS_D");
    EXPECT_STREQ(bsaConfNames[kBsaConfRows - 1], "_MAX_POSSIBLE_BSA_CONF_VAR_NAME");
}

} // namespace
