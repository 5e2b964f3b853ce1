#include "commons/xml/xml_error_handlers.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

namespace brask {

namespace {

void ignore(void* /*context*/, const char* /*format*/, ...) {}

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

} // namespace brask
