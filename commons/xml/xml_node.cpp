#include "commons/xml/xml_node.h"

#include "commons/files/rename.h"
#include "commons/xml/xml_document.h"
#include "commons/xml/xml_globals.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace brask {

namespace {

void writeElement(const XmlNode& element, const std::string& file) {
    FILE* const stream = std::fopen(file.c_str(), "w+");
    if (stream == nullptr) {
        // This process made the file a moment ago: that it cannot open it is a fault of the program. To go on
        // would put an empty file in the target's place.
        std::abort();
    }
    const QuietXmlErrors quiet;
    xmlElemDump(stream, element.doc_, element.node_);
    const bool failed = std::ferror(stream) != 0;
    if (std::fclose(stream) != 0 || failed) {
        BRASK_THROW(tError_SaveFile, file);
    }
}

} // namespace

XmlNode XmlNode::getParent() const {
    if (node_->parent == nullptr) {
        BRASK_THROW(NoParentNode);
    }
    return {doc_, node_->parent};
}

void XmlNode::saveToFileAtomically(cstring& path) const {
    const std::string file = makeFileBeside(path, "xw-stfa-");
    writeElement(*this, file);
    giveToPanel(file);
    try {
        // Unlike the document's, this save takes the target away first: for a moment there is none.
        if (std::filesystem::exists(path)) {
            std::filesystem::remove(path);
        }
        brask::rename(file, path);
    } catch (const std::filesystem::filesystem_error& e) {
        BRASK_THROW(CantRenameFile, file, path, e.what());
    }
}

XmlNode addChildNode(tXmlBmmDocument& document, xmlNode* parent, cstring& name) {
    return {document.doc_.get(), document.addChild(parent, name)};
}

std::string getNodeContent(xmlNode* node) {
    const tXmlCharPtr content(xmlNodeGetContent(node));
    // A null is left to the string's constructor, which raises the std::logic_error that callers know.
    return fromXml(content.get());
}

std::string getAttributeOrEmpty(xmlNode* node, cstring& name) {
    const tXmlCharPtr value(xmlGetProp(node, toXml(name)));
    return value.get() == nullptr ? "" : fromXml(value.get());
}

} // namespace brask
