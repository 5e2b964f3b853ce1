#pragma once

// Where libxml2's generic error text goes, which is standard error by default, for the time of a block.

#include <libxml/xmlerror.h>

namespace brask {

/// Keeps libxml2 from writing to standard error, for calls whose failure is told by an exception. The handler
/// that was there comes back.
class QuietXmlErrors {
public:
    QuietXmlErrors() : handler(xmlGenericError), context(xmlGenericErrorContext) {
        xmlSetGenericErrorFunc(nullptr, ignore);
    }

    QuietXmlErrors(const QuietXmlErrors&) = delete;
    QuietXmlErrors& operator=(const QuietXmlErrors&) = delete;

    ~QuietXmlErrors() { xmlSetGenericErrorFunc(context, handler); }

private:
    static void ignore(void* /*context*/, const char* /*format*/, ...) {}

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

    ~XmlErrorsReset() { xmlSetGenericErrorFunc(nullptr, nullptr); }
};

} // namespace brask
