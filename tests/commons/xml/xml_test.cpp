#include "commons/files/file_utils.h"
#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/commons/library_test.h"

#include <libxml/parser.h>

#include <sstream>

#include <pwd.h>

namespace {

using namespace test_support;

/// What is written of a document, without its declaration.
std::string dump(tXmlDocument& doc) {
    std::ostringstream out;
    EXPECT_EQ(doc.saveToStream(out, nullptr), 1);
    return out.str().substr(out.str().find('\n') + 1);
}

tXmlBmmDocument parse(const std::string& text) {
    tXmlBmmDocument doc(text);
    doc.initFileDoc(nullptr);
    return doc;
}

/// Leaves libxml2 with its default error handler, whatever a failed parse left behind.
class Xml : public LibraryTest {
    const XmlErrorsReset reset;
};

TEST_F(Xml, WhatCannotBeReadOrWrittenIsTold) {
    ASSERT_EQ(mkfifo(dir.path("fifo").c_str(), 0600), 0);
    EXPECT_THROW(tXmlDocument(dir.path("fifo").c_str()), Error<&tError_WrongInputFile>);
    EXPECT_THAT(thrownText<Error<&tError_ParseFile>>([] { parse("<a>\n<b></a>"); }),
                MatchesRegex("The XML file - was not parsed successfully with the following errors:\n"
                             "Entity: line 2: parser error : .*\n<b></a>\n.*"));
    EXPECT_THAT(thrownText<Error<&tError_ParseFile>>([] {
                    parse({"<a/>\n\0 ", 7});
                }),
                HasSubstr("errors:\nEntity: line 2: parser error : Char 0x0 out of allowed range\n"));
    EXPECT_NO_THROW(parse({"\xFF\xFE<\0a\0/\0>\0\n\0", 12})) << "in UTF-16 a zero byte is half a character";
    tXmlBmmDocument doc = parse("<actual>\xC3\xA9</actual>");
    EXPECT_EQ(thrownText<Error<&tError_WrongDoc>>([&] { doc.initFileDoc("expected"); }),
              "The document has the wrong type, the root node is <actual>, but <expected> was expected");
    EXPECT_THROW(doc.getRootNodeChild("x"), Error<&tError_WrongContent>);
    EXPECT_THROW(tXmlBmmDocument().initFileDoc("any"), Error<&tError_EmptyDoc>);
    const std::string file = dir.path("doc.xml");
    doc.saveToFile(file.c_str(), "ISO-8859-1");
    EXPECT_THAT(readFile(file), HasSubstr("\"ISO-8859-1\"?>\n<actual>\xE9</actual>\n"));
    for (const tXmlDocument& read : {tXmlDocument(doc), tXmlDocument(fs::path(file))}) {
        EXPECT_EQ(read.doc_.get()->parseFlags, XML_PARSE_NONET) << "entities are left alone, DTDs unread";
    }
    EXPECT_EQ(doc.saveToBuffer(xmlAllocOutputBuffer(nullptr)), 1);
    tXmlDocument none;
    none.doc_ = ttPtrWrapper<xmlDoc*, xmlFreeDoc>(nullptr);
    EXPECT_THROW(none.saveToBuffer(xmlAllocOutputBuffer(nullptr)), Error<&tError_SaveFile>);
    const QuietXmlErrors quiet;
    EXPECT_THROW(doc.saveToFile("/no/such"), Error<&tError_SaveFile>);
}

TEST_F(Xml, NothingButTheDocumentItselfIsLoaded) {
    dir.write("secret", "stolen");
    dir.write("dtd", "<!ATTLIST a leaked CDATA 'yes'>");
    dir.write("doc", "<!DOCTYPE a SYSTEM 'dtd' [<!ENTITY e SYSTEM 'secret'>]><a>&e;</a>");
    const int greedy = XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR | XML_PARSE_RECOVER;
    const QuietXmlErrors quiet;
    const auto parseGreedily = [&] {
        tXmlDocument doc;
        doc.doc_ = ttPtrWrapper<xmlDoc*, xmlFreeDoc>(xmlReadFile(dir.path("doc").c_str(), nullptr, greedy));
        return dump(doc);
    };
    EXPECT_THAT(parseGreedily(), MatchesRegex(".*leaked=\"yes\".*stolen.*"));
    const auto stockLoader = xmlGetExternalEntityLoader();
    installExternalEntityLoader();
    EXPECT_THAT(parseGreedily(), Not(MatchesRegex(".*(leaked=\"yes\"|stolen).*")));
    EXPECT_EQ(xmlGetExternalEntityLoader()("secret", nullptr, nullptr), nullptr) << "for no document";
    xmlSetExternalEntityLoader(stockLoader);
}

TEST_F(Xml, IsBuiltWithItsCharactersUnchanged) {
    tXmlBmmDocument doc;
    EXPECT_EQ(doc.initNewDoc("root"), 1);
    xmlNode* const child = doc.addChild(doc.root_, "child");
    doc.setAttribute(child, "k", "first");
    doc.setAttribute(child, "k", "<\"&");
    doc.addTextChild(doc.root_, "text", "a < b");
    doc.addCData(doc.root_, "<");
    EXPECT_EQ(doc.getAttribute(child, "k") + doc.getText(doc.root_), "<\"&<");
    EXPECT_THROW(doc.getAttribute(child, "none"), Error<&NoSuchAttribute>);
    EXPECT_EQ(dump(doc), "<root><child k=\"&lt;&quot;&amp;\"/><text>a &lt; b</text><![CDATA[<]]></root>\n");
    tXmlBmmDocument copy(child);
    EXPECT_EQ(dump(copy), "<child k=\"&lt;&quot;&amp;\"/>\n");
}

TEST_F(Xml, XPathFindsNodesOrTellsWhereItFoundNone) {
    const tXmlBmmDocument doc = parse("<list><i>1</i><i>2</i><n:i xmlns:n='urn:n'>four</n:i></list>");
    const XmlNode root(doc.doc_.get(), doc.root_);
    EXPECT_EQ(getNodeContent(root.getNode("x:i", {{"x", "urn:n"}}).node_), "four");
    const QuietXmlErrors quiet;
    EXPECT_THAT(thrownText<Error<&tError_XPath_CantEvaluate>>([&] { root.getNode("i[2]").getNode("none"); }),
                HasSubstr("Cannot evaluate a result of the expression 'none at path '/list/i[2]''"));
    EXPECT_THROW(root.getNode("i["), Error<&tError_XPath_CantEvaluate>);
    EXPECT_THROW(root.getNode("count(i)"), Error<&tError_XPath_TypesMismatch>);
    EXPECT_THROW(root.getNode("count(none)"), Error<&tError_XPath_CantEvaluate>);
    EXPECT_THROW(root.getParent().getParent(), Error<&NoParentNode>);
}

TEST_F(Xml, AVisitGoesOnAfterAFailure) {
    struct Visit : tXmlOperator {
        int operator()(const XmlNode& node) const override {
            BRASK_THROW(tError_XmlInternal, getNodeContent(node.node_));
        }
    };

    const tXmlBmmDocument doc = parse("<list><i>1</i><i>2</i></list>");
    const auto note = [](const ExTraceableBase<ExDefault>& error) { logNote(error.what()); };
    EXPECT_EQ(foreach_xmlnode({doc.doc_.get(), doc.root_, "i"}, Visit(), note), 1);
    EXPECT_THAT(log.lines, ElementsAre("1", "2"));
}

TEST_F(Xml, ADtdOrASchemaDecidesOverADocument) {
    const std::string dtd = dir.write("list.dtd", "<!ELEMENT list (i+)><!ELEMENT i EMPTY>");
    tXmlBmmDocument good = parse("<list><i/></list>");
    tXmlBmmDocument bad = parse("<list><j/></list>");
    tDtdValidator::validateXml(good, dtd);
    EXPECT_THAT(
        thrownText<Error<&ExternalDtdValidationFailed>>([&] { tDtdValidator::validateXml(bad, dtd); }),
        MatchesRegex("Failed validation .* " + dtd + "\\. The errors are: .*got \\(j\\).*element j.*"));
    EXPECT_THROW(tDtdValidator::validateXml(bad), Error<&InternalDtdValidationFailed>);
    tXmlBmmDocument own = parse("<!DOCTYPE n [<!ELEMENT n EMPTY>]><n/>");
    tDtdValidator::validateXml(own);

    const std::string valid = dir.write("a document.xml", "<n>1</n>");
    const std::string invalid = dir.write("bad.xml", "<n>one</n>");
    const std::string schema = dir.write("s.xsd", "<schema xmlns='http://www.w3.org/2001/XMLSchema'>"
                                                  "<element name='n' type='int'/></schema>");
    EXPECT_THROW(validateXmlAgainstXsd(valid, schema), XmlValidationException) << "there is no utility yet";
    fs::create_directories(dir.path("admin/sbin"));
    fs::create_symlink(LIBXML_PROXY, dir.path("admin/sbin/libxml-proxy"));
    validateXmlAgainstXsd(valid, schema);
    EXPECT_THAT(thrownText<XmlValidationException>([&] { validateXmlAgainstXsd(invalid, schema); }),
                HasSubstr("'one' is not a valid value"));
    EXPECT_THROW(validateXmlAgainstXsd(valid, invalid), XsdNotValidException);
}

/// libxml2 would take this for an escaped name.
const std::string kDocument = "doc%41";

/// Every test saves kDocument, a whole document, and "node", one of its nodes, below the folder "out".
class AtomicSave : public LibraryTest {
protected:
    /// What was raised. The settings are read once in a process, so that each save runs in a child of its
    /// own.
    std::string save(const std::string& name, const char* account = "bsaadm", uid_t user = geteuid(),
                     rlim_t bytesFree = RLIM_INFINITY) const {
        dir.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts = 1\n");
        fs::permissions(dir.path(), fs::perms(0755));
        fs::permissions(out, fs::perms(0777));
        const auto saveAs = [&] {
            const FixedParams own({{"PRODUCT_ROOT_D", dir.path()}, {"BSAADM", account}});
            tXmlBmmDocument document(std::string("<a><b/></a>"));
            document.initFileDoc("a");
            const XmlNode node(document.doc_.get(), document.root_->children);
            // The accounts are read while they can be: they may be below a folder that is root's alone.
            requireThat(getpwnam("worker") != nullptr && setuid(user) == 0, "account");
            const FileSizeLimit disk(bytesFree);
            name == kDocument ? document.saveToFileAtomically(out + name)
                              : node.saveToFileAtomically(out + name);
        };
        return inChild(saveAs).err;
    }

    /// Owner, mode and content of a file.
    std::string look(const std::string& name) const {
        const struct stat info = statFile(out + name);
        return fmtlib::format("{}:{} {:o} {}", info.st_uid, info.st_gid, info.st_mode & 0777,
                              readFile(out + name));
    }

    long filesLeft() const { return std::distance(fs::directory_iterator(out), {}); }

    const std::string out = fs::path(dir.write("out/" + kDocument, "old")).parent_path() / "";
};

TEST_F(AtomicSave, TheNewContentBelongsToThePanelsAccountAndItsPrimaryGroup) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    fs::create_directory(out + "node"); // the element's save takes it away
    for (const auto& [account, owner] : {std::pair{"worker", "54321:54322 600 "}, {"nobody", "0:0 600 "}}) {
        EXPECT_EQ(save(kDocument, account) + save("node", account), "");
        EXPECT_EQ(look(kDocument), owner + std::string("<?xml version=\"1.0\"?>\n<a><b/></a>\n"));
        EXPECT_EQ(look("node"), owner + std::string("<b/>"));
    }
    EXPECT_EQ(filesLeft(), 2);
}

TEST_F(AtomicSave, AFailureKeepsTheOldContentWithTheNewOneBesideIt) {
    dir.write("out/node", "old");
    const std::string before = look("node");
    for (const auto& [name, work] :
         {std::pair{kDocument, out + "bmm-xp-stfa-doc%41-.*"}, {"node", out + "bmm-xw-stfa-node-.*"}}) {
        EXPECT_THAT(save(name, "worker", geteuid() == 0 ? 54323 : geteuid()),
                    MatchesRegex("Cannot take ownership of " + work + ": Operation not permitted"));
        EXPECT_EQ(look(name), before);
        EXPECT_THAT(save(name, "bsaadm", geteuid(), 1),
                    MatchesRegex("Cannot save the XML document to file '" + work + "'"));
        EXPECT_EQ(look(name), before);
        fs::remove(out + name);
        dir.write("out/" + std::string(name) + "/occupied", "");
        EXPECT_THAT(save(name), MatchesRegex("Cannot rename " + work + " to " + out + name + ": .*"));
    }
    EXPECT_EQ(filesLeft(), 8);
}

} // namespace
