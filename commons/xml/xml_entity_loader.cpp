#include "commons/xml/xml_entity_loader.h"

#include <libxml/catalog.h>
#include <libxml/parser.h>

namespace brask {

namespace {

xmlExternalEntityLoader savedLoader = nullptr;

xmlParserInputPtr loadFirstInputOnly(const char* url, const char* id, xmlParserCtxtPtr ctxt) {
    // A parser context numbers its inputs from 1: what is loaded first is the document itself.
    if (url == nullptr || ctxt == nullptr || ctxt->input_id != 1) {
        return nullptr;
    }
    return savedLoader(url, id, ctxt);
}

} // namespace

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
