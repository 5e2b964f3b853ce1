#include "commons/xml_parse.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"
#include "tests/support/xml_errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <sstream>

#include <sys/stat.h>

namespace {

using namespace brask;
using test_support::readFile;
using test_support::TempDir;
using test_support::thrownText;
using test_support::XmlErrors;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kDeclaration = "<?xml version=\"1.0\"?>\n";

std::string dump(tXmlDocument& doc) {
    std::ostringstream out;
    doc.saveToStream(out, nullptr);
    return out.str();
}

/// Leaves libxml2 with its default error handler, whatever a failed parse left behind.
class XmlDocument : public testing::Test {
protected:
    ~XmlDocument() override { xmlSetGenericErrorFunc(nullptr, nullptr); }

    TempDir dir;
};

TEST_F(XmlDocument, OnlyRegularFilesAreRead) {
    dir.write("good.xml", "<a/>");
    std::filesystem::create_symlink(dir.path("good.xml"), dir.path("link"));
    EXPECT_STREQ(fromXml(xmlDocGetRootElement(tXmlDocument(dir.path("link").c_str()).doc_.get())->name), "a");

    ASSERT_EQ(mkfifo(dir.path("fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink(dir.path("nowhere"), dir.path("dangling"));
    for (const char* name : {"missing", "fifo", "dangling", "."}) {
        const std::filesystem::path path = dir.path(name);
        EXPECT_EQ(thrownText<Error<&tError_WrongInputFile>>([&] { tXmlDocument{path}; }),
                  "The XML file does not exist or is not a regular file. Check the file '" + path.string() +
                      "'");
    }
    tXmlDocument doc;
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([&] { doc.readFromFile(""); }),
              "Assertion failed: *filename != 0");
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([&] { doc.saveToFile(nullptr, nullptr); }),
              "Assertion failed: filename != NULL");
}

TEST_F(XmlDocument, AFailedParseTellsAllOfTheLibrarysTextAndLosesTheOldDocument) {
    const std::string empty = dir.write("empty.xml", "");
    tXmlDocument doc(std::string("<old/>"));
    const tXmlDocument copy = doc;
    const std::string text = thrownText<Error<&tError_ParseFile>>([&] { doc.readFromFile(empty.c_str()); });
    EXPECT_THAT(text, StartsWith("The XML file " + empty +
                                 " was not parsed successfully with the following errors:\n"));
    EXPECT_THAT(text, HasSubstr("Document is empty"));
    EXPECT_EQ(doc.doc_.get(), nullptr);
    EXPECT_NE(copy.doc_.get(), nullptr);

    const std::string broken =
        thrownText<Error<&tError_ParseFile>>([] { tXmlBmmDocument(std::string("<a>\n<b></a>")); });
    EXPECT_THAT(broken, StartsWith("The XML file - was not parsed successfully with the following errors:\n"
                                   "Entity: line 2: parser error : "));
    EXPECT_THAT(broken, HasSubstr("\n<b></a>\n"));
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([] { tXmlDocument(std::string()); }),
              "Assertion failed: content.size()");
}

TEST_F(XmlDocument, NothingButTheDocumentItselfIsLoaded) {
    dir.write("secret.txt", "stolen");
    dir.write("outside.dtd", "<!ATTLIST a leaked CDATA 'yes'>");
    const std::string file =
        dir.write("doc.xml", "<!DOCTYPE a SYSTEM 'outside.dtd' [<!ENTITY e SYSTEM 'secret.txt'>]><a>&e;</a>");
    // With the options of this layer nothing is asked for; the filter holds even where a caller asks for it.
    EXPECT_EQ(tXmlBmmDocument(file.c_str()).initFileDoc("a"), 1);

    const int greedy = XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR | XML_PARSE_RECOVER;
    const auto parseGreedily = [&] {
        const XmlErrors errors;
        tXmlBmmDocument doc;
        doc.doc_ = ttPtrWrapper<xmlDoc*, xmlFreeDoc>(xmlReadFile(file.c_str(), nullptr, greedy));
        doc.initFileDoc("a");
        return dump(doc);
    };
    const auto stockLoader = xmlGetExternalEntityLoader();
    EXPECT_THAT(parseGreedily(), testing::AllOf(HasSubstr("stolen"), HasSubstr("leaked")));
    installExternalEntityLoader();
    installExternalEntityLoader();
    const std::string filtered = parseGreedily();
    xmlSetExternalEntityLoader(stockLoader);
    EXPECT_THAT(filtered, testing::Not(HasSubstr("stolen")));
    EXPECT_THAT(filtered, testing::Not(HasSubstr("leaked")));
}

TEST_F(XmlDocument, WritesToFilesBuffersStreamsAndStandardOutput) {
    tXmlBmmDocument doc(std::string("<a>\xC3\xA9</a>"));
    const std::string asWritten = kDeclaration + "<a>&#xE9;</a>\n";

    doc.saveToFile(dir.path("plain.xml"));
    EXPECT_EQ(readFile(dir.path("plain.xml")), asWritten);
    doc.saveToFile(dir.path("latin.xml").c_str(), "ISO-8859-1");
    EXPECT_EQ(readFile(dir.path("latin.xml")),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a>\xE9</a>\n");

    testing::internal::CaptureStdout();
    EXPECT_EQ(doc.saveToStdout(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), asWritten);

    std::ostringstream stream;
    EXPECT_EQ(doc.saveToStream(stream, "UTF-8"), 1);
    EXPECT_EQ(stream.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\xC3\xA9</a>\n");

    ttPtrWrapper<xmlBuffer*, xmlBufferFree> memory(xmlBufferCreate());
    EXPECT_EQ(doc.saveToBuffer(xmlOutputBufferCreateBuffer(memory.get(), nullptr)), 1);
    EXPECT_EQ(fromXml(xmlBufferContent(memory.get())), asWritten);
}

TEST_F(XmlDocument, WhatCannotBeWrittenIsToldExceptByAStream) {
    tXmlDocument doc(std::string("<a/>"));
    const XmlErrors quiet;
    const std::string target = dir.path("no/such/folder.xml");
    EXPECT_EQ(thrownText<Error<&tError_SaveFile>>([&] { doc.saveToFile(target); }),
              "Cannot save the XML document to file '" + target + "'");
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([&] { doc.saveToBuffer(nullptr); }),
              "Assertion failed: buffer != 0");

    std::ostringstream stream;
    const auto refuse = [](void*, const char*, int) { return -1; };
    EXPECT_EQ(thrownText<Error<&tError_SaveFile>>(
                  [&] { doc.saveToBuffer(xmlOutputBufferCreateIO(refuse, nullptr, nullptr, nullptr)); }),
              "Cannot save the XML document to file 'in-memory buffer'");
    stream.setstate(std::ios::badbit);
    EXPECT_EQ(doc.saveToStream(stream, nullptr), 1);
    EXPECT_EQ(stream.str(), "");
}

TEST_F(XmlDocument, BuildersPutTheirCharactersInUnchanged) {
    tXmlBmmDocument doc;
    ASSERT_EQ(doc.initNewDoc("root"), 1);
    xmlNode* const child = doc.addChild(doc.root_, "child");
    doc.setAttribute(child, "k", "first");
    doc.setAttribute(child, "k", "<\"&");
    doc.setAttribute(child, "empty", "");
    xmlNode* const text = doc.addTextChild(doc.root_, "text", "a < b & \"c\"");
    xmlNode* const first = doc.addText(child, "one ");
    EXPECT_EQ(doc.addText(child, "two"), first);
    doc.addCData(doc.root_, "<raw>");

    EXPECT_EQ(dump(doc), kDeclaration + "<root><child k=\"&lt;&quot;&amp;\" empty=\"\">one two</child>"
                                        "<text>a &lt; b &amp; \"c\"</text><![CDATA[<raw>]]></root>\n");
    EXPECT_EQ(doc.getAttribute(child, "k"), "<\"&");
    EXPECT_EQ(doc.getAttribute(child, "empty"), "");
    EXPECT_EQ(thrownText<Error<&NoSuchAttribute>>([&] { doc.getAttribute(child, "none"); }),
              "Node child does not have attribute none");
    EXPECT_EQ(doc.getText(text), "a < b & \"c\"");
    EXPECT_EQ(doc.getText(doc.addChild(doc.root_, "hollow")), "");
    EXPECT_EQ(getXmlChild(child, "text"), first);
}

TEST_F(XmlDocument, TakesAFreeNodeOverAndCopiesOneOfAnotherDocument) {
    tXmlBmmDocument source(std::string("<a><b><c/></b></a>"));
    source.initFileDoc(nullptr);
    const std::string before = dump(source);
    tXmlBmmDocument copied(source.getRootNodeChild("b"));
    EXPECT_EQ(dump(copied), kDeclaration + "<b><c/></b>\n");
    EXPECT_EQ(dump(source), before);

    xmlNode* const loose = xmlNewNode(nullptr, toXml("loose"));
    const tXmlBmmDocument adopted(loose);
    EXPECT_EQ(adopted.root_, loose);
    EXPECT_EQ(loose->doc, adopted.doc_.get());
}

TEST_F(XmlDocument, ChecksTheRootAndItsChildren) {
    tXmlBmmDocument doc(std::string("<actual/>"));
    EXPECT_EQ(thrownText<Error<&tError_WrongDoc>>([&] { doc.initFileDoc("expected"); }),
              "The document has the wrong type, the root node is <actual>, but <expected> was expected");
    EXPECT_EQ(thrownText<Error<&tError_WrongContent>>([&] { doc.getRootNodeChild("x"); }),
              "Can not find 'x' element in 'actual' element.");
    tXmlBmmDocument hollow;
    EXPECT_EQ(thrownText<Error<&tError_EmptyDoc>>([&] { hollow.initFileDoc("r"); }),
              "The document is empty. Cannot find the root element <r>");
    EXPECT_EQ(thrownText<Error<&AssertionFailed>>([&] { hollow.getRootNodeChild("x"); }),
              "Assertion failed: node != NULL");
}

TEST_F(XmlDocument, RemovesOneNamespaceAndNoOther) {
    tXmlBmmDocument doc(std::string("<a xmlns='urn:x' xmlns:o='urn:other' xmlns:p='urn:x'>"
                                    "<p:b p:k='1' o:k='2'/><o:c><d xmlns='urn:x'/></o:c></a>"));
    doc.removeNamespace("urn:x"); // no root yet, no effect
    doc.initFileDoc("a");
    doc.removeNamespace("urn:");
    EXPECT_THAT(dump(doc), HasSubstr("xmlns:p=\"urn:x\""));
    doc.removeNamespace("urn:x");
    EXPECT_EQ(dump(doc),
              kDeclaration + "<a xmlns:o=\"urn:other\"><b k=\"1\" o:k=\"2\"/><o:c><d/></o:c></a>\n");
}

} // namespace
