#include "commons/run/xml_log_merge.h"

#include "commons/xml/xml_error_handlers.h"
#include "commons/xml/xml_node.h"

namespace brask {

namespace {

/// Adds what is at `element`, which lies in the file below `objects`.
void merge(Log& log, const XmlNode& element, const ObjectList& objects) {
    for (xmlNode* child = xmlFirstElementChild(element.node_); child != nullptr;
         child = xmlNextElementSibling(child)) {
        const XmlNode node(element.doc_, child);
        if (tXmlBmmDocument::nodeNameIs(child->name, "message")) {
            const std::string description = getNodeContent(node.getNode("description").node_);
            const std::string word = getNodeContent(node.getNode("@severity").node_);
            log.AddMessage(severityOfWord(word, severity::kInfo), ExTraceableBase<ExDefault>("", description),
                           objects);
        } else if (tXmlBmmDocument::nodeNameIs(child->name, "object")) {
            ObjectList path = objects;
            path.emplace_back(getAttributeOrEmpty(child, "name"), getAttributeOrEmpty(child, "type"));
            merge(log, node, path);
        }
    }
}

} // namespace

void AddResultFile(Log& log, const std::string& path) {
    // The run goes on, and with it libxml2's complaints about names of objects.
    const XmlErrorsReset reset;
    tXmlBmmDocument file(path.c_str());
    file.initFileDoc("execution-result");
    merge(log, XmlNode(file.doc_.get(), file.root_), {});
}

void AddResultFile(const std::string& path) {
    if (currentLog != nullptr) {
        AddResultFile(*currentLog, path);
    }
}

} // namespace brask
