#include "commons/run/qa_status.h"

#include "commons/panel/product_paths.h"
#include "commons/xml/xml_error_handlers.h"
#include "commons/xml/xml_node.h"
#include "commons/xml/xpath_expr.h"

#include <boost/lexical_cast.hpp>

#include <filesystem>

namespace brask {

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
