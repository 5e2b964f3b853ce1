#include "tests/support/program.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace test_support;
using testing::HasSubstr;

const std::string schema =
    R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema"><xs:element name="n" type="xs:int"/></xs:schema>)";

class LibxmlProxy : public testing::Test {
protected:
    /// Runs the script in the test's folder, where relative names lead to.
    ProgramResult run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(),
                         {"/usr/bin/env", "-C", folder.path(), PRODUCT_SOURCES "/admin/sbin/libxml-proxy"});
        return runProgram(arguments);
    }

    ProgramResult validate(const std::string& document, const std::string& xsd) const {
        return run({"--validate-xml", "--xml-file=" + document, "--xsd-file=" + xsd});
    }

    TempDir folder;
    ScopedEnv path{"PATH", "/nonexistent"};
};

TEST_F(LibxmlProxy, TellsABadSchemaFromABadDocument) {
    folder.write("good.xsd", schema);
    folder.write("other.xsd", "<schema/>");
    folder.write("malformed.xsd", "<");
    folder.write("valid.xml", "<n>1</n>");
    folder.write("invalid.xml", "<n>one</n>");
    folder.write("malformed.xml", "<n>1");
    folder.write("secret", "1234567");
    folder.write("external.xml", "<!DOCTYPE n [<!ENTITY e SYSTEM 'secret'>]><n>&e;</n>");

    const ProgramResult good = validate("valid.xml", "good.xsd");
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.out, "");
    const std::tuple<std::string, int, std::string> cases[] = {
        {"invalid.xml", 1, "'one' is not a valid value"},
        {"malformed.xml", 1, "Premature end of data"},
        {"missing.xml", 1, "cannot be read: ./missing.xml"},
        {"external.xml", 1, "entity reference"},
    };
    for (const auto& [document, status, reason] : cases) {
        const ProgramResult result = validate(document, "good.xsd");
        EXPECT_EQ(result.status, status) << document;
        EXPECT_THAT(result.out, HasSubstr(reason)) << document;
        for (const char* xsd : {"other.xsd", "malformed.xsd", "missing.xsd", "."}) {
            const ProgramResult unusable = validate(document, xsd);
            EXPECT_EQ(unusable.status, 11) << document << ' ' << xsd;
            EXPECT_THAT(unusable.out, HasSubstr(xsd)) << document;
        }
    }
}

TEST_F(LibxmlProxy, TakesAnyFileName) {
    for (const std::string name :
         {"-", "--noout", "a b", "a\nb", "a%20b", "a#b", "http:", "a:b", "*", "$(x)", "'\"", "\xc3\xa9"}) {
        folder.write(name, "<n>1</n>");
        folder.write(name + ".xsd", schema);
        const ProgramResult valid = validate(name, name + ".xsd");
        EXPECT_EQ(valid.status, 0) << name << ": " << valid.out;
        folder.write(name, "<n/>");
        EXPECT_EQ(validate(folder.path(name), folder.path(name + ".xsd")).status, 1) << name;
    }
}

TEST_F(LibxmlProxy, TakesItsArgumentsInAnyOrderAndNoOthers) {
    folder.write("s", schema);
    folder.write("d", "<n>1</n>");
    EXPECT_EQ(run({"--xsd-file=s", "--xml-file=d", "--validate-xml"}).status, 0);
    const std::vector<std::string> cases[] = {{},
                                              {"--validate-xml"},
                                              {"--xml-file=d", "--xsd-file=s"},
                                              {"--validate-xml", "--xml-file=", "--xsd-file=s"},
                                              {"--validate-xml", "--xml-file=d", "--xsd-file=s", "--more"}};
    for (const auto& arguments : cases) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_NE(result.out, "");
    }
}

} // namespace
