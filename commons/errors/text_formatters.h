#pragma once

// Renderings of an exception as text: the chain of messages for a person, and the diagnostic line for the
// debug log.

#include "commons/errors/ex_base.h"

#include <string>

namespace brask {

/// Collects the messages of a chain, outermost first, joined by ": ".
class ErrorMessageFormatter : public ExInfoVisitor {
public:
    void OnName(const std::string&) override {}

    void OnMessage(const std::string& value) override { message = value; }

    void OnFunction(const std::string&) override {}

    void OnFile(const std::string&) override {}

    void OnLine(int) override {}

    void OnInner() override { text += message + ": "; }

    void OnSeverity(int) override {}

    std::string GetResult() const { return text + message; }

private:
    std::string text;
    std::string message;
};

/// Forms the diagnostic line of one exception: tag name, message, place and function. Of a chain the line of
/// the innermost exception remains.
class TextMsgFormatter : public ExInfoVisitor {
public:
    void OnName(const std::string& value) override { tagName = value; }

    void OnMessage(const std::string& value) override { message = value; }

    void OnFunction(const std::string& value) override { function = value; }

    void OnFile(const std::string& value) override { file = value; }

    void OnLine(int value) override { line = value; }

    void OnInner() override;

    void OnSeverity(int value) override { severity = value; }

    /// Turns the facts received since the last flush into the text, in place of what the text was.
    void Flush();

    const std::string& GetResult() const { return text; }

private:
    std::string text;
    std::string tagName;
    std::string function;
    std::string file;
    int line = 0;
    std::string message;
    int severity = 0;
};

/// The messages of `ex` and of its chain of inner exceptions, outermost first, joined by ": ". No names, no
/// places.
std::string GetErrorMessage(const IExTraceable& ex);

/// What the debug log and the error report show of `ex`: name, message, "[file:name]" and, on a line of its
/// own, the function; a part that is not known is left out.
std::string GetErrorText(const IExTraceable& ex);

} // namespace brask
