#include "commons/xml/xml_node.h"

namespace brask {

XmlNode XmlNode::getParent() const {
    if (node_->parent == nullptr) {
        BRASK_THROW(NoParentNode);
    }
    return {doc_, node_->parent};
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
