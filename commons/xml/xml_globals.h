#pragma once

// What libxml2 keeps for the whole process: where its generic error text goes, which is standard error by
// default, and what a parse may load.

#include <libxml/xmlerror.h>

namespace brask {

/// Appends one formatted fragment of libxml2's error text to the std::string at `ctx`, with nothing between
/// the fragments: libxml2 calls its handler several times for one error and writes the line breaks itself.
/// The signature is that of libxml2's generic error function and of the handlers of a validation context.
void appendXmlErrorText(void* ctx, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Keeps libxml2 from writing to standard error, for calls whose failure becomes an exception. The handler
/// that was there comes back.
class QuietXmlErrors {
public:
    QuietXmlErrors();
    QuietXmlErrors(const QuietXmlErrors&) = delete;
    QuietXmlErrors& operator=(const QuietXmlErrors&) = delete;
    ~QuietXmlErrors();

private:
    xmlGenericErrorFunc handler;
    void* context;
};

/// Puts libxml2's default handler back in the end, for a block that may end by a failed parse: the parse
/// leaves a handler behind that must not be called any more (see xml_document.h).
class XmlErrorsReset {
public:
    XmlErrorsReset() = default;
    XmlErrorsReset(const XmlErrorsReset&) = delete;
    XmlErrorsReset& operator=(const XmlErrorsReset&) = delete;
    ~XmlErrorsReset();
};

/// Keeps every parse of this process from loading anything but the document (or DTD) that it was asked for:
/// an external subset, an external entity or the like is refused, and libxml2 goes on as with any entity that
/// it cannot load. Together with XML_PARSE_NONET that is the whole protection against external entities.
/// Catalogs are switched off.
/// Call it once at the start of a run, before any document is read. A second call changes nothing.
void installExternalEntityLoader();

} // namespace brask
