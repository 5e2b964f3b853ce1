#include "commons/xml/xml_document.h"

#include "commons/errors/error.h"
#include "commons/files/rename.h"
#include "commons/files/retry.h"
#include "commons/files/temp_file.h"
#include "commons/panel/param_source.h"
#include "commons/xml/xml_globals.h"
#include "lib/process/lib/identity.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <ostream>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

namespace brask {

namespace {

/// Nothing else is switched on: no DTD loading, no substitution of entities, no recovery.
constexpr int kParseOptions = XML_PARSE_NONET;

bool isRegularFile(const char* filename) {
    struct stat info;
    return stat(filename, &info) == 0 && S_ISREG(info.st_mode);
}

void requireFileName(const char* filename) {
    requireThat(filename != nullptr, "filename != NULL");
    requireThat(*filename != 0, "*filename != 0");
}

/// Puts the document that `parse` returns into `holder`. The old one goes whatever the result.
template <class Parse>
void parseInto(ttPtrWrapper<xmlDoc*, xmlFreeDoc>& holder, const char* name, Parse parse) {
    const auto errors = std::make_unique<std::string>();
    xmlSetGenericErrorFunc(errors.get(), appendXmlErrorText);
    holder = ttPtrWrapper<xmlDoc*, xmlFreeDoc>(parse());
    if (holder.get() == nullptr) {
        // On purpose without the reset below: callers have always had to do it themselves after a failure,
        // as the header warns.
        BRASK_THROW(tError_ParseFile, name, *errors);
    }
    xmlSetGenericErrorFunc(nullptr, nullptr);
}

/// The document of a text, or null.
xmlDoc* parseText(const std::string& content) {
    const ttPtrWrapper<xmlParserCtxt*, xmlFreeParserCtxt> parser(xmlNewParserCtxt());
    xmlDoc* const doc = xmlCtxtReadMemory(parser.get(), content.data(), static_cast<int>(content.size()),
                                          nullptr, nullptr, kParseOptions);
    if (doc != nullptr && parser.get()->input->cur < parser.get()->input->end) {
        // After the root, libxml2 takes a zero byte for the end of the text, whatever follows.
        xmlGenericError(xmlGenericErrorContext,
                        "Entity: line %d: parser error : Char 0x0 out of allowed range\n",
                        parser.get()->input->line);
        xmlFreeDoc(doc);
        return nullptr;
    }
    return doc;
}

/// libxml2's name for standard input and output.
bool isStandardStream(const char* filename) {
    return std::string_view(filename) == "-";
}

/// Writes `doc` to the file of exactly this name: libxml2 would take the name for a URI and unescape it. A
/// null `encoding` is UTF-8. Returns whether all was written; when there is no such encoding, the file is
/// left alone.
bool writeToFile(const char* filename, xmlDoc* doc, const char* encoding) {
    xmlCharEncodingHandler* const handler =
        encoding == nullptr ? nullptr : xmlFindCharEncodingHandler(encoding);
    if (encoding != nullptr && handler == nullptr) {
        return false;
    }
    const bool standard = isStandardStream(filename);
    std::FILE* const file = standard ? stdout : std::fopen(filename, "wb");
    if (file == nullptr) {
        return false;
    }
    const int written = xmlSaveFileTo(xmlOutputBufferCreateFile(file, handler), doc, encoding);
    return (standard || std::fclose(file) == 0) && written >= 0;
}

int writeToStream(void* context, const char* buffer, int length) {
    auto& stream = *static_cast<std::ostream*>(context);
    stream.write(buffer, length);
    return stream.fail() ? -1 : length;
}

int keepStreamOpen(void*) {
    return 0;
}

bool hasHref(const xmlNs* ns, std::string_view href) {
    return ns != nullptr && ns->href != nullptr && href == fromXml(ns->href);
}

/// Unlinks and frees the declarations of `href` on `element`. Nothing may refer to them any more.
void removeDeclarations(xmlNode* element, std::string_view href) {
    xmlNs** link = &element->nsDef;
    while (*link != nullptr) {
        xmlNs* const declaration = *link;
        if (hasHref(declaration, href)) {
            *link = declaration->next;
            xmlFreeNs(declaration);
        } else {
            link = &declaration->next;
        }
    }
}

void removeNamespaceBelow(xmlNode* element, std::string_view href) {
    if (hasHref(element->ns, href)) {
        xmlSetNs(element, nullptr);
    }
    for (xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        if (hasHref(attribute->ns, href)) {
            attribute->ns = nullptr;
        }
    }
    for (xmlNode* child = element->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            removeNamespaceBelow(child, href);
        }
    }
    // Last, because until here a child may refer to the declaration.
    removeDeclarations(element, href);
}

} // namespace

tXmlDocument::tXmlDocument() {
    createNewDoc();
}

tXmlDocument::tXmlDocument(const char* filename) {
    readFromFile(filename);
}

tXmlDocument::tXmlDocument(const std::filesystem::path& path) {
    const std::string filename = path.string();
    readFromFile(filename.c_str());
}

tXmlDocument::tXmlDocument(const std::string& content) {
    requireThat(!content.empty(), "content.size()");
    parseInto(doc_, "-", [&content] { return parseText(content); });
}

void tXmlDocument::saveToFile(const std::string& path) {
    saveToFile(path.c_str(), nullptr);
}

int tXmlDocument::saveToStdout() {
    saveToFile("-", nullptr);
    return 0;
}

void tXmlDocument::createNewDoc() {
    doc_ = ttPtrWrapper<xmlDoc*, xmlFreeDoc>(xmlNewDoc(toXml("1.0")));
    if (doc_.get() == nullptr) {
        BRASK_THROW(tError_XmlInternal, "#0001: Can not create new XML document.");
    }
}

int tXmlDocument::readFromFile(const char* filename) {
    requireFileName(filename);
    if (!isStandardStream(filename) && !isRegularFile(filename)) {
        BRASK_THROW(tError_WrongInputFile, filename);
    }
    parseInto(doc_, filename, [filename] { return xmlReadFile(filename, nullptr, kParseOptions); });
    return 1;
}

void tXmlDocument::saveToFile(const char* filename, const char* encoding) {
    requireFileName(filename);
    const QuietXmlErrors quiet;
    xmlDoc* const doc = doc_.get();
    if (doc == nullptr ||
        !writeToFile(filename, doc, encoding != nullptr ? encoding : fromXml(doc->encoding))) {
        BRASK_THROW(tError_SaveFile, filename);
    }
}

int tXmlDocument::saveToBuffer(xmlOutputBufferPtr buffer) {
    requireThat(buffer != nullptr, "buffer != 0");
    if (xmlSaveFileTo(buffer, doc_.get(), nullptr) < 0) {
        BRASK_THROW(tError_SaveFile, "in-memory buffer");
    }
    return 1;
}

int tXmlDocument::saveToStream(std::ostream& stream, const char* encoding) {
    xmlOutputBuffer* const buffer = xmlOutputBufferCreateIO(
        writeToStream, keepStreamOpen, &stream, xmlGetCharEncodingHandler(XML_CHAR_ENCODING_UTF8));
    xmlSaveFileTo(buffer, doc_.get(), encoding);
    return 1;
}

void tXmlDocument::saveToFileAtomically(const std::string& path) {
    const std::string file = makeFileBeside(path, "xp-stfa-");
    saveToFile(file);
    giveToPanel(file);
    retryFileOperation([&] { brask::rename(file, path); });
}

tXmlBmmDocument::tXmlBmmDocument(const char* filename) : tXmlDocument(filename) {}

tXmlBmmDocument::tXmlBmmDocument(const std::string& content) : tXmlDocument(content) {}

tXmlBmmDocument::tXmlBmmDocument(xmlNodePtr node)
    : root_(node->doc == nullptr ? node : xmlDocCopyNode(node, doc_.get(), 1)) {
    if (root_ == nullptr) {
        BRASK_THROW(tError_XmlInternal, "Unable to clone XML node");
    }
    xmlDocSetRootElement(doc_.get(), root_);
}

int tXmlBmmDocument::initNewDoc(const char* rootName) {
    root_ = xmlNewNode(nullptr, toXml(rootName));
    if (root_ == nullptr) {
        BRASK_THROW(tError_XmlInternal, "#0002: Can not create new node");
    }
    xmlDocSetRootElement(doc_.get(), root_);
    return 1;
}

int tXmlBmmDocument::initFileDoc(const char* rootName) {
    root_ = xmlDocGetRootElement(doc_.get());
    if (root_ == nullptr) {
        BRASK_THROW(tError_EmptyDoc, rootName);
    }
    if (rootName != nullptr && !nodeNameIs(root_->name, rootName)) {
        BRASK_THROW(tError_WrongDoc, rootName, fromXml(root_->name));
    }
    return 1;
}

xmlNode* tXmlBmmDocument::getRootNodeChild(const char* name) const {
    xmlNode* const child = getXmlChild(root_, name);
    if (child == nullptr) {
        BRASK_THROW(tError_WrongContent, std::string("Can not find '") + name + "' element in '" +
                                             fromXml(root_->name) + "' element.");
    }
    return child;
}

std::string tXmlBmmDocument::getAttribute(xmlNode* node, cstring& name) const {
    const tXmlCharPtr value(xmlGetProp(node, toXml(name)));
    if (value.get() == nullptr) {
        BRASK_THROW(NoSuchAttribute, fromXml(node->name), name);
    }
    return fromXml(value.get());
}

std::string tXmlBmmDocument::getText(xmlNode* node) const {
    const tXmlCharPtr text(xmlNodeListGetString(doc_.get(), node->children, 1));
    return text.get() == nullptr ? "" : fromXml(text.get());
}

void tXmlBmmDocument::removeNamespace(cstring& href) {
    if (root_ != nullptr) {
        removeNamespaceBelow(root_, href);
    }
}

xmlNode* tXmlBmmDocument::addChild(xmlNode* parent, cstring& name) {
    return xmlAddChild(parent, xmlNewDocNode(doc_.get(), nullptr, toXml(name), nullptr));
}

xmlNode* tXmlBmmDocument::addTextChild(xmlNode* parent, cstring& name, cstring& content) {
    return xmlNewTextChild(parent, nullptr, toXml(name), toXml(content));
}

xmlNode* tXmlBmmDocument::addCData(xmlNode* parent, cstring& content) {
    return xmlAddChild(parent,
                       xmlNewCDataBlock(doc_.get(), toXml(content), static_cast<int>(content.size())));
}

xmlNode* tXmlBmmDocument::addText(xmlNode* parent, cstring& content) {
    return xmlAddChild(parent, xmlNewText(toXml(content)));
}

xmlAttr* tXmlBmmDocument::setAttribute(xmlNode* node, cstring& name, cstring& value) {
    return xmlSetProp(node, toXml(name), toXml(value));
}

bool tXmlBmmDocument::nodeNameIs(const xmlChar* nodeName, cstring& name) {
    return xmlStrcmp(nodeName, toXml(name)) == 0;
}

xmlNode* getXmlChild(xmlNodePtr node, const char* name) {
    requireThat(node != nullptr, "node != NULL");
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (xmlStrcmp(child->name, toXml(name)) == 0) {
            return child;
        }
    }
    return nullptr;
}

std::string makeFileBeside(const std::filesystem::path& target, const std::string& prefix) {
    return BMM_getTempFileName(target.parent_path().string(), prefix + target.filename().string(), false);
}

void giveToPanel(const std::string& file) {
    const uid_t uid = idOfUser(getParam("BSAADM").c_str(), 0);
    const gid_t gid = idOfUser(getParam("BSAADM").c_str(), 1);
    if (chown(file.c_str(), uid, gid) != 0) {
        BRASK_THROW(CantTakeFileOwnership, file, std::strerror(errno));
    }
}

} // namespace brask
