#include "backup_sign_lib/legacy_xml.h"

#include "backup_sign_lib/sign_errors.h"
#include "commons/xml/xml_document.h"
#include "commons/xml/xml_globals.h"
#include "commons/xml/xpath_expr.h"

#include <array>
#include <cstdio>
#include <map>
#include <memory>

namespace brask {

namespace {

constexpr const char* kEnvelopeNamespace = "urn:envelope";

struct StreamCloser {
    void operator()(FILE* stream) const { std::fclose(stream); }
};

using Stream = std::unique_ptr<FILE, StreamCloser>;

void copyAll(FILE* from, FILE* to) {
    std::array<char, 4096> buffer;
    while (std::feof(from) == 0) {
        // After an error comes what can still be read, or nothing. NOLINTNEXTLINE(clang-analyzer-unix.Stream)
        const size_t count = std::fread(buffer.data(), 1, buffer.size(), from);
        if (count == 0) {
            break;
        }
        if (std::fwrite(buffer.data(), 1, count, to) < count) {
            BRASK_THROW(SignError, "Unable to copy data");
        }
    }
}

} // namespace

void copyFileOrStream(const std::string& input, const std::string& output) {
    // A stream that can't be opened is passed on as null, and the process dies of it.
    const Stream from(input.empty() ? fdopen(fileno(stdin), "rb") : std::fopen(input.c_str(), "rb"));
    const Stream to(output.empty() ? fdopen(fileno(stdout), "wb") : std::fopen(output.c_str(), "wb"));
    try {
        copyAll(from.get(), to.get());
    } catch (...) {
        // Nothing is reported and the command succeeds: callers of the deprecated commands take whatever
        // came.
    }
}

void unwrapEnvelope(const std::string& input, const std::string& output) {
    const XmlErrorsReset reset; // What is logged of a failure goes through libxml2 again.
    tXmlBmmDocument document(input.c_str());
    document.initFileDoc(nullptr);
    const std::map<std::string, std::string> namespaces{{"n", kEnvelopeNamespace}};
    const std::string payload = "/n:Envelope/n:Data/n:migration-dump";
    XmlNode node(document.doc_.get(), document.root_);
    const tXPathExpr enveloped(node.doc_, toXml(payload), node.node_, namespaces);
    if (xmlXPathCastToBoolean(enveloped.getResult()) != 0) {
        node = node.getNode(payload, namespaces);
    }
    tXmlBmmDocument copy(node.node_);
    copy.removeNamespace(kEnvelopeNamespace);
    copy.saveToFile(output.empty() ? "-" : output.c_str(), "UTF-8");
}

} // namespace brask
