#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/commons/library_test.h"
#include "tests/support/xml_errors.h"

#include <libxml/parser.h>

#include <sstream>

namespace {

using namespace brask;
using namespace test_support;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kDeclaration = "<?xml version=\"1.0\"?>\n";

std::string dump(tXmlDocument& doc) {
    std::ostringstream out;
    doc.saveToStream(out, nullptr);
    return out.str();
}

/// Leaves libxml2 with its default error handler, whatever a failed parse left behind.
class Xml : public LibraryTest {
protected:
    ~Xml() override { xmlSetGenericErrorFunc(nullptr, nullptr); }
};

TEST_F(Xml, WhatCannotBeReadIsToldWithTheReason) {
    ASSERT_EQ(mkfifo(dir.path("fifo").c_str(), 0600), 0);
    for (const char* name : {"missing", "fifo", "."}) {
        EXPECT_EQ(thrownText<Error<&tError_WrongInputFile>>(
                      [&] { tXmlDocument{std::filesystem::path(dir.path(name))}; }),
                  "The XML file does not exist or is not a regular file. Check the file '" + dir.path(name) +
                      "'");
    }
    EXPECT_THAT(
        thrownText<Error<&tError_ParseFile>>([] { tXmlBmmDocument(std::string("<a>\n<b></a>")); }),
        testing::AllOf(StartsWith("The XML file - was not parsed successfully with the following errors:\n"
                                  "Entity: line 2: parser error : "),
                       HasSubstr("\n<b></a>\n")));
    tXmlBmmDocument doc(std::string("<actual/>"));
    EXPECT_EQ(thrownText<Error<&tError_WrongDoc>>([&] { doc.initFileDoc("expected"); }),
              "The document has the wrong type, the root node is <actual>, but <expected> was expected");
    EXPECT_EQ(thrownText<Error<&tError_WrongContent>>([&] { doc.getRootNodeChild("x"); }),
              "Can not find 'x' element in 'actual' element.");
    EXPECT_EQ(thrownText<Error<&tError_EmptyDoc>>([] { tXmlBmmDocument().initFileDoc("r"); }),
              "The document is empty. Cannot find the root element <r>");
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([&] { doc.readFromFile(""); }),
              "Assertion failed: *filename != 0");
}

TEST_F(Xml, NothingButTheDocumentItselfIsLoaded) {
    dir.write("secret.txt", "stolen");
    dir.write("outside.dtd", "<!ATTLIST a leaked CDATA 'yes'>");
    const std::string file =
        dir.write("doc.xml", "<!DOCTYPE a SYSTEM 'outside.dtd' [<!ENTITY e SYSTEM 'secret.txt'>]><a>&e;</a>");
    const auto parseGreedily = [&file] {
        const XmlErrors errors;
        tXmlBmmDocument doc;
        doc.doc_ = ttPtrWrapper<xmlDoc*, xmlFreeDoc>(
            xmlReadFile(file.c_str(), nullptr,
                        XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR | XML_PARSE_RECOVER));
        return dump(doc);
    };
    const auto stockLoader = xmlGetExternalEntityLoader();
    EXPECT_THAT(parseGreedily(), testing::AllOf(HasSubstr("stolen"), HasSubstr("leaked")));
    installExternalEntityLoader();
    const std::string filtered = parseGreedily();
    xmlSetExternalEntityLoader(stockLoader);
    EXPECT_THAT(filtered, testing::Not(testing::AnyOf(HasSubstr("stolen"), HasSubstr("leaked"))));
}

TEST_F(Xml, IsWrittenInAnyEncodingAndFailuresAreToldExceptByAStream) {
    tXmlBmmDocument doc(std::string("<a>\xC3\xA9</a>"));
    EXPECT_EQ(dump(doc), kDeclaration + "<a>&#xE9;</a>\n");
    doc.saveToFile(dir.path("latin.xml").c_str(), "ISO-8859-1");
    EXPECT_EQ(readFile(dir.path("latin.xml")),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a>\xE9</a>\n");
    const XmlErrors quiet;
    EXPECT_EQ(thrownText<Error<&tError_SaveFile>>([&] { doc.saveToFile(dir.path("no/such")); }),
              "Cannot save the XML document to file '" + dir.path("no/such") + "'");
    const auto refuse = [](void*, const char*, int) { return -1; };
    EXPECT_THROW(doc.saveToBuffer(xmlOutputBufferCreateIO(refuse, nullptr, nullptr, nullptr)),
                 Error<&tError_SaveFile>);
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_EQ(doc.saveToStream(stream, nullptr), 1);
}

TEST_F(Xml, BuildersPutTheirCharactersInUnchanged) {
    tXmlBmmDocument doc;
    doc.initNewDoc("root");
    xmlNode* const child = doc.addChild(doc.root_, "child");
    doc.setAttribute(child, "k", "first");
    doc.setAttribute(child, "k", "<\"&");
    doc.addTextChild(doc.root_, "text", "a < b & \"c\"");
    doc.addText(child, "one");
    doc.addCData(doc.root_, "<raw>");
    EXPECT_EQ(dump(doc), kDeclaration + "<root><child k=\"&lt;&quot;&amp;\">one</child>"
                                        "<text>a &lt; b &amp; \"c\"</text><![CDATA[<raw>]]></root>\n");
    EXPECT_EQ(doc.getAttribute(child, "k"), "<\"&");
    EXPECT_EQ(thrownText<Error<&NoSuchAttribute>>([&] { doc.getAttribute(child, "none"); }),
              "Node child does not have attribute none");
    tXmlBmmDocument copy(child);
    EXPECT_EQ(dump(copy), kDeclaration + "<child k=\"&lt;&quot;&amp;\">one</child>\n");
}

TEST_F(Xml, LosesOneNamespaceAndNoOther) {
    tXmlBmmDocument doc(std::string("<a xmlns='urn:x' xmlns:o='urn:other' xmlns:p='urn:x'>"
                                    "<p:b p:k='1' o:k='2'/><o:c><d xmlns='urn:x'/></o:c></a>"));
    doc.initFileDoc("a");
    doc.removeNamespace("urn:x");
    EXPECT_EQ(dump(doc),
              kDeclaration + "<a xmlns:o=\"urn:other\"><b k=\"1\" o:k=\"2\"/><o:c><d/></o:c></a>\n");
}

TEST_F(Xml, XPathFindsNodesOrTellsWhereItFoundNone) {
    tXmlBmmDocument doc(std::string("<list><i>1</i><i>2</i><n:i xmlns:n='urn:n'>four</n:i></list>"));
    doc.initFileDoc("list");
    const XmlNode root(doc.doc_.get(), doc.root_);
    const XmlNode second = root.getNode("i[2]");
    EXPECT_EQ(getNodeContent(second.node_), "2");
    EXPECT_EQ(getNodeContent(root.getNode("x:i", {{"x", "urn:n"}}).node_), "four");
    const XmlErrors quiet;
    const std::string cantEvaluate = "The XML document is invalid for an XPath expression.\n"
                                     "Cannot evaluate a result of the expression '";
    for (const std::string expr : {"none", "i[", "x:i"}) {
        EXPECT_EQ(thrownText<Error<&tError_XPath_CantEvaluate>>([&] { second.getNode(expr); }),
                  cantEvaluate + expr + (expr == "none" ? " at path '/list/i[2]''" : "'"));
    }
    EXPECT_EQ(thrownText<Error<&tError_XPath_TypesMismatch>>([&] { root.getNode("count(i)"); }),
              "The result of the expression 'count(i)' is not a 'nodeset' type");
    EXPECT_THROW(root.getParent().getParent(), Error<&NoParentNode>);
}

/// Fails at every node, fatally at the one that says so.
struct Visit : tXmlOperator {
    int operator()(const XmlNode& node) const override {
        if (getNodeContent(node.node_) == "fatal") {
            BRASK_THROW_AS(tError_XmlInternal, ExFatal, "fatal");
        }
        BRASK_THROW(tError_XmlInternal, getNodeContent(node.node_));
    }
};

TEST_F(Xml, AVisitGoesOnAfterAFailureUnlessItIsFatal) {
    static std::string failures;
    tXmlBmmDocument doc(std::string("<list><i>1</i><i>2</i><i>fatal</i><i>4</i></list>"));
    const tXPathExpr items(doc.doc_.get(), toXml("/list/i"), nullptr);
    const auto note = [](const ExTraceableBase<ExDefault>& error) { failures += error.what(); };
    EXPECT_THROW(foreach_xmlnode(items, Visit(), note), ExTraceableBase<ExFatal>);
    EXPECT_EQ(failures, "12");
}

TEST_F(Xml, ADtdDecidesAndPullsInNothingFurther) {
    const std::string dtd = dir.write("list.dtd", "<!ELEMENT list (i+)><!ELEMENT i EMPTY>");
    tXmlDocument good(std::string("<list><i/></list>"));
    tXmlDocument bad(std::string("<list><j/></list>"));
    tDtdValidator::validateXml(good, dtd);
    EXPECT_THAT(
        thrownText<Error<&ExternalDtdValidationFailed>>([&] { tDtdValidator::validateXml(bad, dtd); }),
        testing::AllOf(StartsWith("Failed validation of the document with the external DTD " + dtd +
                                  ". The errors are: "),
                       HasSubstr("expecting (i)+, got (j)"), HasSubstr("No declaration for element j")));
    EXPECT_THAT(thrownText<Error<&InternalDtdValidationFailed>>([&] { tDtdValidator::validateXml(bad); }),
                testing::AllOf(
                    StartsWith("Failed validation of the document with its internal DTD. The errors are: "),
                    HasSubstr("no DTD found")));
    const XmlErrors quiet;
    EXPECT_THROW(tDtdValidator::validateXml(good, dir.path("none")), Error<&InvalidDtdFile>);

    const auto stockLoader = xmlGetExternalEntityLoader();
    installExternalEntityLoader();
    dir.write("list.dtd", "<!ELEMENT list (i+)><!ENTITY % more SYSTEM '" +
                              dir.write("more", "<!ELEMENT i EMPTY>") + "'>%more;");
    EXPECT_THROW(tDtdValidator::validateXml(good, dtd), Error<&ExternalDtdValidationFailed>);
    xmlSetExternalEntityLoader(stockLoader);
}

TEST_F(Xml, ASchemaDecidesThroughThePanelsUtility) {
    const std::string good = dir.write("a document.xml", "<n>1</n>");
    const std::string bad = dir.write("bad.xml", "<n>one</n>");
    const std::string schema = dir.write("s.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                                  "<xs:element name='n' type='xs:int'/></xs:schema>");
    EXPECT_THROW(validateXmlAgainstXsd(good, schema), XmlValidationException) << "there is no utility yet";
    std::filesystem::create_symlink(PRODUCT_SOURCES "/admin", dir.path("admin"));
    EXPECT_NO_THROW(validateXmlAgainstXsd(good, schema));
    EXPECT_THAT(thrownText<XmlValidationException>([&] { validateXmlAgainstXsd(bad, schema); }),
                HasSubstr("'one' is not a valid value"));
    EXPECT_THAT(thrownText<XsdNotValidException>([&] { validateXmlAgainstXsd(good, bad); }),
                HasSubstr("bad.xml"));
}

} // namespace
