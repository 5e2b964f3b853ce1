#include "tests/support/support.h"

#include <set>

namespace {

using namespace test_support;

TEST(LibxmlProxy, TellsBadSchemasDocumentsAndArgumentsApart) {
    const TempDir folder;
    const auto expect = [&](const std::string& document, const std::string& xsd, int status,
                            const std::string& reason) {
        const Outcome result = runProgram({"/usr/bin/env", "-C", folder.path(), LIBXML_PROXY,
                                           "--validate-xml", "--xml-file=" + document, "--xsd-file=" + xsd});
        EXPECT_EQ(result.status, status) << document << " " << xsd << " " << result.out;
        EXPECT_THAT(result.out, HasSubstr(reason)) << document << " " << xsd;
    };
    const std::string schema =
        "<schema xmlns='http://www.w3.org/2001/XMLSchema'><element name='n' type='int'/></schema>";
    for (const std::string name : {"-", "--noout", "a b\n", "a%20#", "http:", "*$(x)'\"", "\xc3\xa9", "n"}) {
        folder.write(name, "<n>1</n>");
        folder.write(name + ".xsd", schema);
        expect(name, name + ".xsd", 0, "");
    }
    expect("missing", "n.xsd", 1, "The document cannot be read: ./missing");
    expect("n", "missing", 11, "The schema cannot be read: ./missing");
    expect("", "n.xsd", 2, "--xml-file= names no file");
    const std::tuple<std::string, std::string, int, std::string> cases[] = {
        {"<m/>", schema, 1, "d:1: Element 'm': No matching global declaration"},
        {"<n>1", "<n>1", 11, "Premature end of data"},
        {"<!DOCTYPE n [<!ENTITY e '1'>]><n>&e;</n>", schema, 0, ""},
        {"<!DOCTYPE n [<!ENTITY e SYSTEM 'n'>]><n>&e;</n>", schema, 1,
         "External entities are not fetched: n"},
        {"<!DOCTYPE n [<!ENTITY % e SYSTEM 'n'> %e;]><n>&e;</n>", schema, 1, "entities are not fetched: n"},
        {"<!DOCTYPE n SYSTEM 'http://x/' [<!ENTITY e SYSTEM 'n'>]><n>1</n>", schema, 0, ""},
        {"<n>1</n>",
         "<schema xmlns='http://www.w3.org/2001/XMLSchema'><include "
         "schemaLocation='http://localhost/s'/></schema>",
         11, "Attempt to load network entity"},
    };
    for (const auto& [document, xsd, status, reason] : cases) {
        folder.write("d", document);
        folder.write("x", xsd);
        expect("d", "x", status, reason);
    }
    EXPECT_EQ(runProgram({LIBXML_PROXY, "--validate-xml", "--xml=n"}).out, "Unknown argument: --xml=n\n");
    for (const char* two :
         {"--validate-xml --xml-file=n", "--validate-xml --xsd-file=n", "--xml-file=n --xsd-file=n"}) {
        EXPECT_THAT(runProgram({"/bin/sh", "-c", std::string(LIBXML_PROXY " ") + two}).out,
                    StartsWith("Needed are "));
    }
}

TEST(SendErrorReport, KeepsTheLatestHundredReportsAndRefusesWhatIsNone) {
    const TempDir root;
    const std::string script = root.path("admin/bin/send-error-report");
    const std::string spool = root.path("var/error-reports");
    fs::create_directories(root.path("admin/bin"));
    fs::copy_file(SOURCE_FOLDER "/product/admin/bin/send-error-report", script);
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
        const Outcome result = runProgram({script, argument}, {}, text);
        EXPECT_EQ(result.status, reason.empty() ? 0 : 1) << reason;
        EXPECT_EQ(result.out, reason.empty() ? "" : "The error report is not taken: " + reason + "\n");
    }
    const std::set<fs::path> files(fs::directory_iterator(spool), {});
    EXPECT_EQ(files.size(), 1 + 100U) << "the lock and the reports";
    EXPECT_EQ(readFile(*files.rbegin()), report);
    EXPECT_EQ(fs::status(*files.rbegin()).permissions(), fs::perms(0600));
}

} // namespace
