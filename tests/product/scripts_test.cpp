#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <set>

namespace {

using namespace test_support;
namespace fs = std::filesystem;

TEST(LibxmlProxy, TellsBadSchemasDocumentsAndArgumentsApart) {
    const TempDir folder;
    const std::string schema =
        "<schema xmlns='http://www.w3.org/2001/XMLSchema'><element name='n'/></schema>";
    std::vector<std::tuple<std::string, std::string, int, std::string>> cases = {
        {"invalid", "s", 1, "No matching global declaration"}, {"malformed", "s", 1, "Premature end of data"},
        {"missing", "s", 1, "cannot be read: ./missing"},      {"invalid", "invalid", 11, "invalid"},
        {"malformed", "malformed", 11, "malformed"},           {"", "s", 2, "--xml-file="},
    };
    folder.write("s", schema);
    folder.write("invalid", "<m/>");
    folder.write("malformed", "<n>1");
    for (const std::string name : {"-", "--noout", "a b\n", "a%20#", "http:", "*$(x)'\"", "\xc3\xa9"}) {
        folder.write(name, "<n>1</n>");
        folder.write(name + ".xsd", schema);
        cases.emplace_back(name, name + ".xsd", 0, "");
    }
    for (const auto& [document, xsd, status, reason] : cases) {
        const ProgramResult result =
            runProgram({"/usr/bin/env", "-C", folder.path(), PRODUCT_SOURCES "/admin/sbin/libxml-proxy",
                        "--validate-xml", "--xml-file=" + document, "--xsd-file=" + xsd});
        EXPECT_EQ(result.status, status) << document << " " << xsd << " " << result.out;
        EXPECT_THAT(result.out, testing::HasSubstr(reason));
    }
}

TEST(SendErrorReport, KeepsTheLatestHundredReportsAndRefusesWhatIsNone) {
    const TempDir root;
    const std::string script = root.path("admin/bin/send-error-report");
    const std::string spool = root.path("var/error-reports");
    fs::create_directories(root.path("admin/bin"));
    fs::copy_file(PRODUCT_SOURCES "/admin/bin/send-error-report", script);
    const std::string report = "<?xml version=\"1.0\"?>\n<error><component>general</component></error>\n";
    for (int year = 1000; year < 1102; ++year) {
        root.write("var/error-reports/report-" + std::to_string(year) + ".xml", "old");
    }
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"bmm", report, ""},
        {"other", report, "exactly one argument is needed: bmm"},
        {"bmm", "<error>", "it is not well-formed XML"},
        {"bmm", "<errors/>", "its root element is not \"error\""},
        {"bmm", "<error>" + std::string(1 << 20, ' ') + "</error>", "it is longer than 1048576 bytes"},
    };
    for (const auto& [argument, text, reason] : cases) {
        const ProgramResult result = runProgram({script, argument}, {}, text);
        EXPECT_EQ(result.status, reason.empty() ? 0 : 1) << reason;
        EXPECT_EQ(result.out, reason.empty() ? "" : "The error report is not taken: " + reason + "\n");
    }
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(spool)) {
        files.insert(entry.path());
    }
    EXPECT_EQ(files.size(), 1 + 100U) << "the lock and the reports";
    EXPECT_EQ(readFile(*files.rbegin()), report);
    EXPECT_EQ(fs::status(*files.rbegin()).permissions(), fs::perms(0600));
}

} // namespace
