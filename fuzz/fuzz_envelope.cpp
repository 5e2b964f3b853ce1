// Any document is taken out of its envelope or refused. What comes out holds nothing of the envelope's
// namespace, nothing of any file but the input, and comes out the same when it goes in again.

#include "backup_sign_lib/legacy_xml.h"
#include "commons/errors/ex_base.h"
#include "commons/xml/xml_document.h"
#include "commons/xml/xml_globals.h"
#include "fuzz/fuzz.h"

#include <cstring>
#include <optional>

namespace {

constexpr int kSecretDescriptor = 100; // "/proc/self/fd/100", which the seeds and the dictionary name
constexpr const char* kSecret = "<a>SECRET-OF-ANOTHER-FILE</a>";

bool prepare() {
    static const fuzz::MemoryFile secret(kSecret);
    brask::installExternalEntityLoader();
    const int fd =
        static_cast<int>(std::strtol(secret.path().c_str() + secret.path().rfind('/') + 1, nullptr, 10));
    return dup2(fd, kSecretDescriptor) == kSecretDescriptor;
}

const fuzz::MemoryFile& input() {
    static const fuzz::MemoryFile file;
    return file;
}

/// What is inside the envelope, or nothing when the document is refused.
std::optional<std::string> unwrap(std::string_view text) {
    static const fuzz::MemoryFile output;
    input().write(text);
    try {
        brask::unwrapEnvelope(input().path(), output.path());
        return output.read();
    } catch (const brask::IExTraceable&) {
        return std::nullopt;
    }
}

void requireNoEnvelope(const xmlNode* node) {
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_ELEMENT_NODE) {
            fuzz::require(node->ns == nullptr || xmlStrcmp(node->ns->href, brask::toXml("urn:envelope")) != 0,
                          "nothing of the envelope's namespace is left");
            requireNoEnvelope(node->children);
        }
    }
}

/// Whether a namespace's name would need to be escaped: libxml2 2.9 writes it as it is in memory.
bool losesNamespaces(const xmlNode* node) {
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        for (const xmlNs* ns = node->nsDef; ns != nullptr; ns = ns->next) {
            if (ns->href != nullptr && std::strpbrk(brask::fromXml(ns->href), "&<\t\n\r") != nullptr) {
                return true;
            }
        }
        if (losesNamespaces(node->children)) {
            return true;
        }
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isPrepared = prepare();
    fuzz::require(isPrepared, "the other file is there");
    const std::string_view text = fuzz::textOf(data, size);
    const std::optional<std::string> content = unwrap(text);
    if (!content) {
        return 0;
    }
    const bool knowsSecret = text.find("SECRET") != std::string_view::npos;
    fuzz::require(knowsSecret || content->find(kSecret + 3) == std::string::npos, "no other file is read");
    brask::tXmlBmmDocument document(input().path().c_str());
    document.initFileDoc(nullptr);
    // The document type stays behind with the document, and what its entities mean with it.
    if (document.root_->doc->intSubset != nullptr || losesNamespaces(document.root_)) {
        return 0;
    }
    requireNoEnvelope(xmlDocGetRootElement(brask::tXmlDocument(*content).doc_.get()));
    fuzz::require(unwrap(*content) == content, "what comes out goes in again");
    return 0;
}
