#pragma once

// The XML execution log: what happened during one run, for whoever started it. The document:
//
//     <execution-result status="warnings">
//       <message code="" severity="info"><description>text</description></message>
//       <object name="example.com" type="Domain">
//         <message code="SignError" severity="warning">
//           <description>text</description>
//           <message …>the inner exception</message>
//         </message>
//       </object>
//     </execution-result>
//
// The status is "success", "info", "warnings" or "error"; the severity of a message "info", "warning" or
// "error".

#include "commons/log/log_facade.h"
#include "commons/xml/xml_document.h"
#include "commons/xml/xml_node.h"

#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace brask {

/// Collects the run's messages in memory; the destructor writes them to the disk, all at once.
///
/// Looking an object up by name and type takes no longer for the messages beside it. It goes by the objects
/// that came and went through the operations of Log: nobody else may add or remove any. Names and types are
/// put into XPath expressions unescaped: one with a quote makes a look-up raise tError_XPath_CantEvaluate.
class XmlLog final : public Log, public tXmlBmmDocument {
public:
    /// A log for the file `fileName` of the session directory, "migration.result" if it is empty. A file that
    /// is there already is renamed: ".1", ".2" and so on is appended, the first that is free. Raises
    /// AssertionFailed without a session, std::filesystem::filesystem_error when the file cannot be renamed.
    explicit XmlLog(const std::string& fileName);

    /// Writes the file as XmlNode::saveToFileAtomically does. The status of a run that never set one, not
    /// even success, is "error". A failure leaves no partial file under the log's name; it goes to the
    /// debug log as an error and the run goes on.
    ~XmlLog() override;

    /// Statuses: 10 success, 20 info, 30 warning, 40 error. RaiseStatus(10) is what marks a run as
    /// successful.
    void RaiseStatus(int severity) override;

    /// The severity that is given is written, not the exception's own; of a chain of exceptions it is
    /// the innermost one's that is replaced. The status rises with it.
    void AddMessage(const IExTraceable& ex) override;
    void AddMessage(int severity, const IExTraceable& ex) override;
    void AddMessage(const IExTraceable& ex, const ObjectList& objects) override;
    void AddMessage(int severity, const IExTraceable& ex, const ObjectList& objects) override;

    void AddObject(const std::string& name, const std::string& type) override;

    /// Raises NoParentNode when no object is open.
    void RemoveEmptyObject() override;

    ObjectList GetObjects() const override;

private:
    /// The parent of an object, and the object's name and type.
    using Place = std::tuple<const xmlNode*, std::string, std::string>;

    static Place placeOf(xmlNode* object);
    void addMessageAt(xmlNode* node, int severity, const IExTraceable& ex);
    xmlNode* findObject(xmlNode* parent, const std::string& name, const std::string& type) const;
    xmlNode* addObjectAt(xmlNode* node, const std::string& name, const std::string& type);
    void removeObject(xmlNode* object);
    void write();

    std::string status; // a word of the table
    std::string path;
    std::vector<std::pair<int, std::string>> statusTable;
    XmlNode current;
    /// Of each parent, the first child in document order with each name and type.
    std::map<Place, xmlNode*, std::less<>> firstObjects;
};

/// Makes the execution log of this process and attaches it to the log's front end. To be called once.
void CreateXmlLog(const std::string& fileName);

/// Deletes it, whereby the file is written, and detaches it. Nothing happens when there is none.
void DestroyXmlLog();

/// Work on one object of the run: while it lives, messages of the current log belong to the object. Begin and
/// end are noted in the debug log. The current log must stay the same meanwhile; without one only the notes
/// are written.
class LogObjectScope {
public:
    /// `kind` is an id of objectDisplayName, whose text also becomes the object's type.
    LogObjectScope(const std::string& name, int kind);
    LogObjectScope(const LogObjectScope&) = delete;
    LogObjectScope& operator=(const LogObjectScope&) = delete;

    /// Closes the object; one that collected nothing leaves no trace. A failure ends the process.
    ~LogObjectScope();

private:
    std::string title;
};

/// Adds the messages of another "execution-result" file, each at the path of objects that it has there,
/// counted from the root of `log`; objects of the same name and type become one. Elements that are neither
/// message nor object are left out, inner exceptions are too. Raises what reading the file raises
/// (tError_WrongDoc when it is another document), with nothing added, and tError_XPath_CantEvaluate at a
/// message without description or severity.
void AddResultFile(Log& log, const std::string& path);

/// The same for the current log; nothing happens when there is none.
void AddResultFile(const std::string& path);

/// What a test wants a utility to report in place of its own status.
struct QaStatus {
    bool found = false; ///< the test names this utility
    int errcode = 0;
    int severity = 10; ///< 10, 20, 30 or 40, as in the execution log
    std::string message;
};

/// Reads the test switch of the utility `name` from "qa-status-test.cfg" in the component's directory:
///
///     <log><util name="NAME" severity="error" errcode="7">the message</util></log>
///
/// The record is as above when the file is missing or has no such element with both attributes filled in.
/// `name` is put into an XPath expression unescaped. Raises what reading the document raises, and
/// boost::bad_lexical_cast for an errcode that is no decimal integer.
QaStatus readQaStatus(const std::string& name);

} // namespace brask
