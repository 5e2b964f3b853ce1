#include "commons/run/xml_log.h"

#include "commons/panel/product_paths.h"
#include "commons/run/profiling_names.h"
#include "commons/run/session_files.h"
#include "commons/xml/xml_globals.h"
#include "commons/xml/xml_msg_formatter.h"
#include "commons/xml/xml_node.h"
#include "commons/xml/xpath_expr.h"

#include <boost/lexical_cast.hpp>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>

namespace brask {

namespace {

constexpr const char* kObject = "object";

std::string resultPath(const std::string& fileName) {
    requireThat(session != nullptr, "session != NULL");
    return fileName.empty() ? session->getResultFile() : joinPath(session->getPath(), fileName);
}

/// Moves an earlier result out of the way, to the first suffix that is free.
void rotate(const std::string& path) {
    if (!std::filesystem::exists(path)) {
        return;
    }
    int suffix = 1;
    std::string kept = fmtlib::format("{}.{}", path, suffix);
    while (std::filesystem::exists(kept)) {
        kept = fmtlib::format("{}.{}", path, ++suffix);
    }
    std::filesystem::rename(path, kept);
}

/// Whether `text` between single quotes is an XPath literal.
bool isLiteral(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](unsigned char c) {
        return c == '\'' || (c < 0x20 && c != '\t' && c != '\n' && c != '\r');
    });
}

/// The objects from the outermost down to `node`.
void appendObjects(const XmlNode& node, ObjectList& objects) {
    if (!tXmlBmmDocument::nodeNameIs(node.node_->name, kObject)) {
        return;
    }
    appendObjects(node.getParent(), objects);
    objects.emplace_back(getAttributeOrEmpty(node.node_, "name"), getAttributeOrEmpty(node.node_, "type"));
}

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

XmlLog::XmlLog(const std::string& fileName)
    : path(resultPath(fileName)), statusTable{{10, "success"},
                                              {severity::kInfo, severityWord(severity::kInfo)},
                                              {severity::kWarning, severityWord(severity::kWarning)},
                                              {severity::kError, severityWord(severity::kError)},
                                              {1, ""}},
      current(doc_.get(), nullptr) {
    initNewDoc("execution-result");
    current.node_ = root_;
    rotate(path);
}

XmlLog::~XmlLog() {
    try {
        write();
    } catch (const std::exception& e) {
        logMessage(level::kError, "Unable to write the execution log {}: {}", path, e.what());
    }
}

void XmlLog::write() {
    std::string text = status;
    if (text.empty()) {
        text = "error";
    } else if (text == "warning") {
        text = "warnings";
    }
    setAttribute(root_, "status", text);
    XmlNode(doc_.get(), root_).saveToFileAtomically(path);
}

void XmlLog::RaiseStatus(int severity) {
    int code = 1;
    for (const auto& [rowSeverity, word] : statusTable) {
        if (word == status) {
            code = rowSeverity;
        }
    }
    const int level = std::max(code, severity);
    status.clear();
    for (const auto& [rowSeverity, word] : statusTable) {
        if (rowSeverity == level) {
            status = word;
        }
    }
}

void XmlLog::AddMessage(const IExTraceable& ex) {
    AddMessage(ex.GetSeverity(), ex);
}

void XmlLog::AddMessage(int severity, const IExTraceable& ex) {
    addMessageAt(current.node_, severity, ex);
}

void XmlLog::AddMessage(const IExTraceable& ex, const ObjectList& objects) {
    AddMessage(ex.GetSeverity(), ex, objects);
}

void XmlLog::AddMessage(int severity, const IExTraceable& ex, const ObjectList& objects) {
    xmlNode* node = root_;
    for (const auto& [name, type] : objects) {
        xmlNode* const found = findObject(node, name, type);
        node = found != nullptr ? found : addObjectAt(node, name, type);
    }
    addMessageAt(node, severity, ex);
}

xmlNode* XmlLog::findObject(xmlNode* parent, const std::string& name, const std::string& type) const {
    if (isLiteral(name) && isLiteral(type)) {
        const auto found = firstObjects.find(std::tie(parent, name, type));
        return found != firstObjects.end() ? found->second : nullptr;
    }
    // As part of an expression such a name makes it fail, which callers know, or gives it another meaning.
    const tXPathExpr found(doc_.get(), parent,
                           fmtlib::format("object[@name='{}' and @type='{}']", name, type));
    return xmlXPathCastToBoolean(found.getResult()) != 0 ? found.getNode() : nullptr;
}

void XmlLog::addMessageAt(xmlNode* node, int severity, const IExTraceable& ex) {
    XmlMsgFormatter formatter(*this, addChild(node, "message"));
    ex.Accept(formatter);
    // Over the exception's own: this is what makes an error of what every exception calls a warning. With
    // inner exceptions the formatter is at the innermost by now, and it is that one's severity which is
    // replaced; readers of the file go by it.
    formatter.OnSeverity(severity);
    RaiseStatus(severity);
}

void XmlLog::AddObject(const std::string& name, const std::string& type) {
    current.node_ = addObjectAt(current.node_, name, type);
}

xmlNode* XmlLog::addObjectAt(xmlNode* node, const std::string& name, const std::string& type) {
    xmlNode* const object = addChild(node, kObject);
    setAttribute(object, "name", name);
    setAttribute(object, "type", type);
    firstObjects.try_emplace(placeOf(object), object);
    return object;
}

void XmlLog::removeObject(xmlNode* object) {
    // None that came later becomes the first: as long as this one was, look-ups found it and made no other.
    const auto first = firstObjects.find(placeOf(object));
    if (first != firstObjects.end() && first->second == object) {
        firstObjects.erase(first);
    }
    xmlUnlinkNode(object);
    xmlFreeNode(object);
}

XmlLog::Place XmlLog::placeOf(xmlNode* object) {
    return {object->parent, getAttributeOrEmpty(object, "name"), getAttributeOrEmpty(object, "type")};
}

void XmlLog::RemoveEmptyObject() {
    if (current.node_ == root_) { // The log itself is no object to close.
        BRASK_THROW(NoParentNode);
    }
    const bool filled =
        getXmlChild(current.node_, "message") != nullptr || getXmlChild(current.node_, kObject) != nullptr;
    const XmlNode parent = current.getParent();
    if (!filled) {
        removeObject(current.node_);
    }
    current = parent;
}

ObjectList XmlLog::GetObjects() const {
    ObjectList objects;
    appendObjects(current, objects);
    return objects;
}

void CreateXmlLog(const std::string& fileName) {
    currentLog = std::make_unique<XmlLog>(fileName).release();
    AttachLogFacade();
}

void DestroyXmlLog() {
    if (currentLog == nullptr) {
        return;
    }
    delete currentLog;
    currentLog = nullptr;
    DetachLogFacade();
}

LogObjectScope::LogObjectScope(const std::string& name, int kind)
    : title(name + " " + objectDisplayName(kind)) {
    logMessage(level::kVerbose, "=> {}", title);
    if (currentLog != nullptr) {
        currentLog->AddObject(name, objectDisplayName(kind));
    }
}

LogObjectScope::~LogObjectScope() {
    logMessage(level::kVerbose, "++ {}", title);
    if (currentLog != nullptr) {
        currentLog->RemoveEmptyObject();
    }
}

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

QaStatus readQaStatus(const std::string& name) {
    const std::string path = getQaStatusFile();
    if (!std::filesystem::exists(path)) {
        return {};
    }
    const XmlErrorsReset reset;
    tXmlBmmDocument file(path.c_str());
    file.initFileDoc("log");
    const std::string filledIn = "util[@name = '" + name + "' and @severity != '' and @errcode != '']";
    if (!xpathExists(file.doc_.get(), toXml(filledIn), file.root_)) {
        return {};
    }
    // The first element of that name, which need not be the one that is filled in.
    xmlNode* const util = XmlNode(file.doc_.get(), file.root_).getNode("util[@name = '" + name + "']").node_;
    const std::string errcode = getAttributeOrEmpty(util, "errcode");
    const std::string message = getNodeContent(util);
    return {.found = true,
            .errcode = errcode.empty() ? 0 : boost::lexical_cast<int>(errcode),
            .severity = severityOfWord(getAttributeOrEmpty(util, "severity"), QaStatus().severity),
            .message = message.empty() ? "QA test message" : message};
}

} // namespace brask
