#include "commons/xml/xml_msg_formatter.h"

namespace brask {

namespace {

const char* levelWord(int severity) {
    switch (severity) {
    case severity::kWarning:
        return "warning";
    case severity::kInfo:
        return "info";
    default:
        return "error";
    }
}

} // namespace

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
    document.setAttribute(node, "severity", levelWord(severity));
}

} // namespace brask
