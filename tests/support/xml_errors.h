#pragma once

#include "commons/xml/xml_globals.h"

#include <libxml/xmlerror.h>

#include <string>

namespace test_support {

/// Collects what libxml2 reports while it lives, and puts libxml2's default handler back. It also serves
/// after a failed parse, which leaves a handler behind that must not be called any more.
class XmlErrors {
public:
    XmlErrors() { xmlSetGenericErrorFunc(&text, brask::appendXmlErrorText); }

    XmlErrors(const XmlErrors&) = delete;

    ~XmlErrors() { xmlSetGenericErrorFunc(nullptr, nullptr); }

    std::string text;
};

} // namespace test_support
