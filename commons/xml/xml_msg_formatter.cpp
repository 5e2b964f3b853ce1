#include "commons/xml/xml_msg_formatter.h"

namespace brask {

void XmlMsgFormatter::OnName(const std::string& tagName) {
    document.setAttribute(node, "code", tagName);
}

void XmlMsgFormatter::OnMessage(const std::string& message) {
    document.addTextChild(node, "description", message);
}

void XmlMsgFormatter::OnInner() {
    node = document.addChild(node, "message");
}

void XmlMsgFormatter::OnSeverity(int severity) {
    document.setAttribute(node, "severity", severityWord(severity));
}

} // namespace brask
