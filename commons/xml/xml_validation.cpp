#include "commons/xml/xml_validation.h"

#include "commons/panel/product_paths.h"
#include "commons/xml/xml_globals.h"
#include "lib/process/lib/ExecCmd.h"

#include <libxml/parser.h>

namespace brask {

namespace {

using ValidContext = ttPtrWrapper<xmlValidCtxt*, xmlFreeValidCtxt>;

/// The utility's exit status when the fault is the schema's.
constexpr int kUnusableSchema = 11;

/// A context that collects errors and warnings alike in `text`.
ValidContext makeContext(std::string& text) {
    xmlValidCtxt* const context = xmlNewValidCtxt();
    if (context == nullptr) { // Not to be held: xmlFreeValidCtxt does not accept null.
        BRASK_THROW(tError_XmlInternal, "Can not allocate memory for xmlValidCtxtPtr");
    }
    context->userData = &text;
    context->error = appendXmlErrorText;
    context->warning = appendXmlErrorText;
    return ValidContext(context);
}

/// libxml2's result; the context is gone before anyone looks at it.
int validateInternally(xmlDoc* doc, std::string& errors) {
    const ValidContext context = makeContext(errors);
    return xmlValidateDocument(context.get(), doc);
}

} // namespace

void tExternalDtdDoc::readFromFile() {
    dtd_ = ttPtrWrapper<xmlDtd*, xmlFreeDtd>(xmlParseDTD(nullptr, toXml(filename_)));
    if (dtd_.get() == nullptr) {
        BRASK_THROW(InvalidDtdFile, filename_);
    }
}

void tDtdValidator::validateXml(tXmlDocument& doc, cstring& dtdFile) {
    tExternalDtdDoc dtd(dtdFile);
    dtd.readFromFile();
    std::string errors;
    const ValidContext context = makeContext(errors);
    if (xmlValidateDtd(context.get(), doc.doc_.get(), dtd.get()) == 0) {
        BRASK_THROW(ExternalDtdValidationFailed, dtdFile, errors);
    }
}

void tDtdValidator::validateXml(tXmlDocument& doc) {
    std::string errors;
    if (validateInternally(doc.doc_.get(), errors) == 0) {
        BRASK_THROW(InternalDtdValidationFailed, errors);
    }
}

void validateXmlAgainstXsd(cstring& xmlFile, cstring& xsdFile) {
    ExecCmd proxy(getLibxmlProxyPath());
    proxy.addArg("--validate-xml").addArg("--xml-file=" + xmlFile).addArg("--xsd-file=" + xsdFile);
    try {
        proxy.run();
    } catch (const ExTraceableBase<ExDefault>&) {
        if (proxy.status == kUnusableSchema) {
            throw XsdNotValidException(proxy.stdoutData);
        }
        throw XmlValidationException(proxy.stdoutData);
    }
}

} // namespace brask
