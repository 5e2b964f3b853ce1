#include "commons/xml_entity_loader.h"
#include "commons/xml_validation.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"
#include "tests/support/xml_errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

namespace {

using namespace brask;
using test_support::FixedParams;
using test_support::TempDir;
using test_support::thrownText;
using test_support::XmlErrors;
using testing::HasSubstr;
using testing::StartsWith;

class XmlValidation : public testing::Test {
protected:
    TempDir dir;
};

TEST_F(XmlValidation, AgainstADtdInAFile) {
    const std::string dtd = dir.write("list.dtd", "<!ELEMENT list (i+)><!ELEMENT i (#PCDATA)>");
    tXmlDocument good(std::string("<list><i/><i>2</i></list>"));
    tXmlDocument bad(std::string("<list><j/></list>"));
    tDtdValidator::validateXml(good, dtd);
    const std::string text =
        thrownText<Error<&ExternalDtdValidationFailed>>([&] { tDtdValidator::validateXml(bad, dtd); });
    EXPECT_THAT(text, StartsWith("Failed validation of the document with the external DTD " + dtd +
                                 ". The errors are: "));
    EXPECT_THAT(text, HasSubstr("Element list content does not follow the DTD, expecting (i)+, got (j)"));
    EXPECT_THAT(text, HasSubstr("No declaration for element j"));

    const XmlErrors reason;
    EXPECT_EQ(thrownText<Error<&InvalidDtdFile>>([&] { tDtdValidator::validateXml(good, dir.path("none")); }),
              "The DTD file " + dir.path("none") + " is invalid");
    EXPECT_THAT(reason.text, HasSubstr("none"));
}

TEST_F(XmlValidation, ADtdPullsInNothingFurther) {
    const auto stockLoader = xmlGetExternalEntityLoader();
    installExternalEntityLoader();
    dir.write("more.ent", "<!ELEMENT i (#PCDATA)>");
    const std::string dtd = dir.write("list.dtd", "<!ELEMENT list (i+)><!ENTITY % more SYSTEM '" +
                                                      dir.path("more.ent") + "'>%more;");
    tXmlDocument doc(std::string("<list><i/></list>"));
    const XmlErrors quiet;
    EXPECT_THAT(
        thrownText<Error<&ExternalDtdValidationFailed>>([&] { tDtdValidator::validateXml(doc, dtd); }),
        HasSubstr("No declaration for element i"));
    xmlSetExternalEntityLoader(stockLoader);
}

TEST_F(XmlValidation, AgainstTheDtdInTheDocument) {
    const std::string subset = "<!DOCTYPE n [<!ELEMENT n EMPTY>]>";
    tXmlDocument good(subset + "<n/>");
    tDtdValidator::validateXml(good);
    const std::string prefix = "Failed validation of the document with its internal DTD. The errors are: ";
    const std::pair<std::string, std::string> cases[] = {{subset + "<n>text</n>", "declared EMPTY"},
                                                         {"<n/>", "no DTD found"}};
    for (const auto& [content, reason] : cases) {
        tXmlDocument bad(content);
        const std::string text =
            thrownText<Error<&InternalDtdValidationFailed>>([&] { tDtdValidator::validateXml(bad); });
        EXPECT_THAT(text, StartsWith(prefix));
        EXPECT_THAT(text, HasSubstr(reason)) << content;
    }
}

TEST_F(XmlValidation, AgainstASchemaThroughThePanelsUtility) {
    const FixedParams product({{"PRODUCT_ROOT_D", dir.path()}});
    const std::string good = dir.write("a document.xml", "<n>1</n>");
    const std::string bad = dir.write("bad.xml", "<n>one</n>");
    const std::string schema = dir.write("s.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                                  "<xs:element name='n' type='xs:int'/></xs:schema>");
    EXPECT_THAT(thrownText<XmlValidationException>([&] { validateXmlAgainstXsd(good, schema); }),
                HasSubstr("No such file or directory"))
        << "there is no utility yet";

    std::filesystem::create_directories(dir.path("admin/sbin"));
    std::filesystem::create_symlink(PRODUCT_SOURCES "/admin/sbin/libxml-proxy",
                                    dir.path("admin/sbin/libxml-proxy"));
    EXPECT_NO_THROW(validateXmlAgainstXsd(good, schema));
    EXPECT_THAT(thrownText<XmlValidationException>([&] { validateXmlAgainstXsd(bad, schema); }),
                HasSubstr("'one' is not a valid value"));
    EXPECT_THAT(thrownText<XsdNotValidException>([&] { validateXmlAgainstXsd(good, bad); }),
                HasSubstr("bad.xml"));
}

} // namespace
