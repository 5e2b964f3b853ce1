#include "commons/errors/text_formatters.h"

#include "commons/errors/format.h"

#include <boost/algorithm/string/join.hpp>

#include <vector>

namespace brask {

void TextMsgFormatter::OnInner() {
    Flush();
    text += "\nInner exception:\n";
}

void TextMsgFormatter::Flush() {
    std::vector<std::string> parts;
    if (!tagName.empty()) {
        parts.push_back(tagName);
    }
    if (!message.empty()) {
        parts.push_back(message);
    }
    if (!file.empty() && line > 0) {
        // The name, not the line number, follows the file: readers of existing logs search for it there. The
        // line only decides whether the place is shown.
        parts.push_back(fmtlib::format("[{}:{}]", file, tagName));
    }
    if (!function.empty()) {
        parts.push_back(fmtlib::format("\n{}", function));
    }
    // Assigned, not appended, on purpose: the cause is alone in the log, without the exceptions that include
    // it.
    text = boost::algorithm::join(parts, " ");
}

std::string GetErrorMessage(const IExTraceable& ex) {
    ErrorMessageFormatter formatter;
    ex.Accept(formatter);
    return formatter.GetResult();
}

std::string GetErrorText(const IExTraceable& ex) {
    TextMsgFormatter formatter;
    ex.Accept(formatter);
    formatter.Flush();
    return formatter.GetResult();
}

} // namespace brask
