#pragma once

#include <string>

namespace brask {

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
