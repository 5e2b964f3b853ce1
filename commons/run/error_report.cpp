#include "commons/run/error_report.h"

#include "commons/errors/error.h"
#include "commons/errors/format.h"
#include "commons/log/log_facade.h"
#include "commons/panel/product_paths.h"
#include "commons/text/text_utils.h"
#include "commons/xml/xml_document.h"
#include "lib/process/lib/ExecCmd.h"
#include "lib/process/lib/this_process.h"

#include <boost/stacktrace.hpp>
#include <libxml/chvalid.h>
#include <libxml/encoding.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlstring.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace brask {

namespace {

std::optional<bool> reportsEnabled;

bool isXmlCharacter(const std::string& utf8) {
    int length = static_cast<int>(utf8.size());
    const int character = xmlGetUTF8Char(reinterpret_cast<const xmlChar*>(utf8.data()), &length);
    return character > 0 && xmlIsCharQ(static_cast<unsigned>(character));
}

/// A logged text can hold anything, a byte of a broken configuration file, say; an XML document cannot.
std::string asXmlText(const std::string& text) {
    const std::string utf8 = SanitizeUtf8(text);
    std::string result;
    for (std::size_t at = 0; at < utf8.size();) {
        // The first byte tells the length. iconv knows the form of old, which has up to six bytes.
        const int length = std::max(std::countl_one(static_cast<unsigned char>(utf8[at])), 1);
        const std::string character = utf8.substr(at, static_cast<std::size_t>(length));
        result += length <= 4 && isXmlCharacter(character) ? character : "?";
        at += character.size();
    }
    return result;
}

std::string currentTrace() {
    std::ostringstream trace;
    trace << boost::stacktrace::stacktrace();
    return trace.str();
}

void addTestData(tXmlBmmDocument& report) {
    if (!std::filesystem::exists(getTestMetaFile())) {
        return;
    }
    std::ifstream file(getTestMetaFile());
    const auto meta = nlohmann::json::parse(file);
    if (meta.contains("scenario")) {
        const auto scenario = meta.at("scenario").get<std::string>();
        xmlNode* info = report.addChild(report.root_, "additional_info");
        report.addTextChild(info, "scenario", asXmlText(scenario));
    }
}

int appendToString(void* context, const char* data, int length) {
    static_cast<std::string*>(context)->append(data, static_cast<std::size_t>(length));
    return length;
}

std::string textOf(tXmlBmmDocument& document) {
    std::string text;
    const char* encoding = reinterpret_cast<const char*>(document.doc_.get()->encoding);
    xmlCharEncodingHandlerPtr handler = encoding != nullptr ? xmlFindCharEncodingHandler(encoding) : nullptr;
    document.saveToBuffer(xmlOutputBufferCreateIO(appendToString, nullptr, &text, handler));
    return text;
}

} // namespace

ErrorReportSender& ErrorReportSender::instance() {
    static ErrorReportSender sender;
    return sender;
}

void ErrorReportSender::installForLog() {
    SetReportHook(
        [](const std::string& component, const std::string& text) { instance().Send(component, text); });
}

void ErrorReportSender::Send(const std::string& component, const std::string& message) {
    if (!IsEnabled()) {
        return;
    }
    callNoThrow(
        [&] {
            ExecCmd sender(getAdminBinPath("send-error-report"));
            sender.addArg("bmm");
            sender.stdinData = PrepareContent(component, message);
            // A sender that dies before it has read the report costs a log line, not the run.
            const SigpipeGuard guard;
            sender.run();
        },
        "Unable to send an error report");
}

bool ErrorReportSender::IsEnabled() {
    if (reportsEnabled) {
        return *reportsEnabled;
    }
    // A report that the check itself raises must stop here.
    reportsEnabled = false;
    try {
        reportsEnabled = !std::filesystem::exists(BRASK_FEEDBACK_DISABLED_FILE);
    } catch (const Error<&ParamError>&) {
        reportsEnabled = true;
    } catch (const std::exception& e) {
        logMessage(level::kVerbose, "Failed to check feedback permission: {}", e.what());
    } catch (...) {
        logMessage(level::kVerbose, "Failed to check feedback permission");
    }
    return *reportsEnabled;
}

std::string ErrorReportSender::PrepareContent(const std::string& component,
                                              const std::string& message) const {
    tXmlBmmDocument report;
    report.initNewDoc("error");
    const auto add = [&report](const char* name, const std::string& text) {
        report.addTextChild(report.root_, name, asXmlText(text));
    };
    add("component", component);
    add("message", message);
    add("file", origin + ", " + component);
    add("line", "0");
    add("trace", currentTrace());
    callNoThrow([&report] { addTestData(report); }, "Unable to add info about current test");
    return textOf(report);
}

} // namespace brask
