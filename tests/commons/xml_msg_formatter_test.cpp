#include "commons/error.h"
#include "commons/ex_formatters.h"
#include "commons/xml_parse.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace brask;

std::string rendered(const IExTraceable& ex, int severity) {
    tXmlBmmDocument document;
    document.initNewDoc("message");
    XmlMsgFormatter formatter(document, document.root_);
    formatter.OnSeverity(severity);
    ex.Accept(formatter);
    std::ostringstream out;
    document.saveToStream(out, nullptr);
    return out.str();
}

TEST(XmlMsgFormatter, NestsTheInnerExceptionAndEscapesItsText) {
    Error<&tError_WrongContent> outer;
    outer.Format("a < b");
    outer.Include(Error<&NoParentNode>());
    // The exception's own severity overwrites the one that was set before.
    EXPECT_EQ(rendered(outer, 20),
              "<?xml version=\"1.0\"?>\n<message severity=\"warning\" code=\"tError_WrongContent\">"
              "<description>a &lt; b</description><message code=\"NoParentNode\" severity=\"warning\">"
              "<description>No parent node on requested XML element</description></message></message>\n");
}

TEST(XmlMsgFormatter, WordsOfTheSeverities) {
    tXmlBmmDocument document;
    document.initNewDoc("message");
    XmlMsgFormatter formatter(document, document.root_);
    const std::pair<int, const char*> words[] = {
        {30, "warning"}, {20, "info"}, {40, "error"}, {10, "error"}, {1, "error"}};
    for (const auto& [severity, word] : words) {
        formatter.OnSeverity(severity);
        EXPECT_EQ(document.getAttribute(document.root_, "severity"), word) << severity;
    }
    formatter.OnName("");
    EXPECT_EQ(document.getAttribute(document.root_, "code"), "");
}

} // namespace
