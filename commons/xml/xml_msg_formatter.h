#pragma once

#include "commons/errors/ex_base.h"
#include "commons/xml/xml_document.h"

#include <boost/noncopyable.hpp>

#include <string>

namespace brask {

/// Renders an exception into an element "message" of the execution log: attributes "code" (the tag name) and
/// "severity" (the level word), a child "description" with the message, and for an inner exception a nested
/// "message" of the same form. Operations that are called again overwrite the attributes.
class XmlMsgFormatter : public ExInfoVisitor, boost::noncopyable {
public:
    /// `node` is a fresh element "message" of `document`. Neither is owned, both must outlive the formatter.
    XmlMsgFormatter(tXmlBmmDocument& document, xmlNode* node) : document(document), node(node) {}

    void OnName(const std::string& tagName) override;
    void OnMessage(const std::string& message) override;

    void OnFunction(const std::string&) override {}

    void OnFile(const std::string&) override {}

    void OnLine(int) override {}

    void OnInner() override;
    /// 30 is "warning", 20 is "info", anything else is "error".
    void OnSeverity(int severity) override;

private:
    tXmlBmmDocument& document;
    xmlNode* node;
};

} // namespace brask
