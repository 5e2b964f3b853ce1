// Any execution log is merged into a new one or refused. What was merged gives the same log when it is merged
// again, and twice as many messages when it is merged into the same.

#include "commons/errors/ex_base.h"
#include "commons/run/session_files.h"
#include "commons/run/xml_log.h"
#include "commons/xml/xml_globals.h"
#include "commons/xml/xpath_expr.h"
#include "fuzz/fuzz.h"

#include <sstream>

namespace {

/// A folder in which no log can be written when it goes.
brask::SessionFiles* readOnlySession() {
    brask::installExternalEntityLoader();
    static brask::SessionFiles session("/proc/self");
    return &session;
}

bool merge(brask::XmlLog& log, const std::string& path) {
    const brask::QuietXmlErrors quiet;
    try {
        brask::AddResultFile(log, path);
        return true;
    } catch (const brask::IExTraceable&) {
        return false;
    }
}

std::string textOf(brask::XmlLog& log) {
    std::ostringstream text;
    log.saveToStream(text, nullptr);
    return text.str();
}

double count(const brask::XmlLog& log, const char* what) {
    return xmlXPathCastToNumber(
        brask::tXPathExpr(log.doc_.get(), brask::toXml(std::string("count(//") + what + ")"), nullptr)
            .getResult());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    brask::session = readOnlySession();
    static const fuzz::MemoryFile file;
    file.write(fuzz::textOf(data, size));
    brask::XmlLog first("");
    if (!merge(first, file.path())) {
        return 0;
    }
    const std::string merged = textOf(first);
    file.write(merged);
    brask::XmlLog second("");
    fuzz::require(merge(second, file.path()) && textOf(second) == merged, "what was merged merges the same");
    const double messages = count(second, "message");
    const double objects = count(second, "object");
    fuzz::require(merge(second, file.path()) && count(second, "message") == 2 * messages,
                  "no message is lost");
    fuzz::require(count(second, "object") == objects, "objects of the same name are one");
    fuzz::require(count(second, "message[not(description) or not(@severity)]") == 0, "each message is whole");
    return 0;
}
