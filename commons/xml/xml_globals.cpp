#include "commons/xml/xml_globals.h"

#include <libxml/catalog.h>
#include <libxml/parser.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

namespace brask {

namespace {

void ignore(void* /*context*/, const char* /*format*/, ...) {}

xmlExternalEntityLoader savedLoader = nullptr;

xmlParserInputPtr loadFirstInputOnly(const char* url, const char* id, xmlParserCtxtPtr ctxt) {
    // A parser context numbers its inputs from 1: what is loaded first is the document itself.
    if (url == nullptr || ctxt == nullptr || ctxt->input_id != 1) {
        return nullptr;
    }
    return savedLoader(url, id, ctxt);
}

} // namespace

void appendXmlErrorText(void* ctx, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int length = vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (length <= 0) {
        return;
    }
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    const auto fragment = std::make_unique<char[]>(size);
    va_start(args, format);
    vsnprintf(fragment.get(), size, format, args);
    va_end(args);
    static_cast<std::string*>(ctx)->append(fragment.get());
}

QuietXmlErrors::QuietXmlErrors() : handler(xmlGenericError), context(xmlGenericErrorContext) {
    xmlSetGenericErrorFunc(nullptr, ignore);
}

QuietXmlErrors::~QuietXmlErrors() {
    xmlSetGenericErrorFunc(context, handler);
}

XmlErrorsReset::~XmlErrorsReset() {
    xmlSetGenericErrorFunc(nullptr, nullptr);
}

void installExternalEntityLoader() {
    // A catalog, which the environment may name, could put another document in the place of standard input.
    xmlCatalogSetDefaults(XML_CATA_ALLOW_NONE);
    const xmlExternalEntityLoader installed = xmlGetExternalEntityLoader();
    // Saving the filter as its own successor would make it call itself without end.
    if (installed != loadFirstInputOnly) {
        savedLoader = installed;
        xmlSetExternalEntityLoader(loadFirstInputOnly);
    }
}

} // namespace brask
