#pragma once

#include "commons/xml/xml_document.h"

#include <map>
#include <string>

namespace brask {

/// Names a node of a document and owns nothing: the document's owner must outlive it.
struct XmlNode {
    XmlNode(xmlDocPtr doc, xmlNodePtr node) : doc_(doc), node_(node) {}

    /// The first node that `xpath` finds from here; `namespaces` maps prefixes to URIs. Raises
    /// tError_XPath_CantEvaluate when the expression is wrong or its result is false or empty, and
    /// tError_XPath_TypesMismatch when the result is true but no node set. xpath_expr.cpp holds it.
    XmlNode getNode(const std::string& xpath,
                    const std::map<std::string, std::string>& namespaces = {}) const;

    /// The document counts as the parent of its root element. Raises NoParentNode on a detached node and on
    /// the document itself.
    XmlNode getParent() const;

    /// Replaces the file `path` with this element alone, without an XML declaration, owned and named as by
    /// tXmlDocument::saveToFileAtomically, the prefix being "bmm-xw-stfa-". An existing target is removed
    /// before the new file takes its name, once and with no retries: if that fails, the old content is gone,
    /// and the new stays in the temporary file. A failure before that leaves the target alone. Raises what
    /// BMM_getTempFileName raises, tError_SaveFile when the disk is full, say, CantTakeFileOwnership,
    /// CantRenameFile.
    void saveToFileAtomically(cstring& path) const;

    xmlDocPtr doc_;
    xmlNodePtr node_;
};

/// A new child element at the end of `parent`.
XmlNode addChildNode(tXmlBmmDocument& document, xmlNode* parent, cstring& name);

/// All the text below `node`. Raises std::logic_error for a node that has no content to tell, such as null.
std::string getNodeContent(xmlNode* node);

/// The value of an attribute, empty when there is none.
std::string getAttributeOrEmpty(xmlNode* node, cstring& name);

} // namespace brask
