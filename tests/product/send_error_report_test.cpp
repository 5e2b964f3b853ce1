#include "tests/support/program.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace test_support;
namespace fs = std::filesystem;

const std::string report = "<?xml version=\"1.0\"?>\n<error><component>general</component></error>\n";

class SendErrorReport : public testing::Test {
protected:
    SendErrorReport() {
        fs::create_directories(root.path("admin/bin"));
        fs::copy_file(PRODUCT_SOURCES "/admin/bin/send-error-report", script);
    }

    ProgramResult send(std::vector<std::string> arguments, const std::string& text) const {
        arguments.insert(arguments.begin(), script);
        return runProgram(arguments, text);
    }

    /// The names in the spool folder, leftovers of all kinds included, but for the lock file.
    std::vector<std::string> spooled() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(spool)) {
            names.push_back(entry.path().filename().string());
        }
        std::erase(names, ".lock");
        std::sort(names.begin(), names.end());
        return names;
    }

    TempDir root;
    const std::string script = root.path("admin/bin/send-error-report");
    const std::string spool = root.path("var/error-reports");
    ScopedEnv path{"PATH", "/nonexistent"};
};

TEST_F(SendErrorReport, SpoolsAReportBelowItsOwnRoot) {
    const ProgramResult result = send({"bmm"}, report);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    ASSERT_EQ(spooled().size(), 1U);
    const std::string file = spool + "/" + spooled()[0];
    EXPECT_EQ(readFile(file), report);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SendErrorReport, RefusesWhatIsNoReportAndLeavesNothingBehind) {
    const std::tuple<std::vector<std::string>, std::string, std::string> cases[] = {
        {{}, report, "exactly one argument is needed: bmm"},
        {{"other"}, report, "exactly one argument is needed: bmm"},
        {{"bmm", "bmm"}, report, "exactly one argument is needed: bmm"},
        {{"bmm"}, "", "it is not well-formed XML"},
        {{"bmm"}, "<error>", "it is not well-formed XML"},
        {{"bmm"}, "<errors/>", "its root element is not \"error\""},
        {{"bmm"}, "<error xmlns='urn:x'/>", "its root element is not \"error\""},
        {{"bmm"}, "<error>" + std::string(1 << 20, ' ') + "</error>", "it is longer than 1048576 bytes"},
    };
    ASSERT_EQ(send({"bmm"}, report).status, 0);
    for (const auto& [arguments, text, reason] : cases) {
        const ProgramResult result = send(arguments, text);
        EXPECT_EQ(result.status, 1) << reason;
        EXPECT_EQ(result.out, "The error report is not taken: " + reason + "\n");
        EXPECT_EQ(spooled().size(), 1U) << reason;
    }
}

TEST_F(SendErrorReport, TheOldestReportsMakeRoom) {
    for (int i = 1000; i < 1102; ++i) {
        root.write("var/error-reports/report-" + std::to_string(i) + "0101T000000.000000000.xml", report);
    }
    EXPECT_EQ(send({"bmm"}, report).status, 0);
    const auto names = spooled();
    ASSERT_EQ(names.size(), 100U);
    EXPECT_EQ(names.front(), "report-10030101T000000.000000000.xml");
    EXPECT_EQ(names.back().substr(0, 9), "report-20");
}

TEST_F(SendErrorReport, ASpoolThatCannotBeWrittenIsTold) {
    root.write("var", "");
    const ProgramResult result = send({"bmm"}, report);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "The error report is not taken: no folder " + spool + "\n");
}

} // namespace
