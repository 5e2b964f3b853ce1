#pragma once

namespace brask {

/// Appends one formatted fragment of libxml2's error text to the std::string at `ctx`, with nothing between
/// the fragments: libxml2 calls its handler several times for one error and writes the line breaks itself.
/// The signature is that of libxml2's generic error function and of the handlers of a validation context.
void appendXmlErrorText(void* ctx, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace brask
