#include "backup_sign_lib/private_key_text.h"

#include <string_view>
#include <utility>

namespace brask {

namespace {

constexpr std::string_view kBegin = "-----BEGIN ";
constexpr std::string_view kDashes = "-----";

/// Where the block ends whose label begins at `labelBegin`: after its END line, or at the end of the text.
size_t blockEnd(const std::string& text, const std::string& label, size_t labelBegin) {
    const std::string endLine = "-----END " + label + std::string(kDashes);
    const size_t end = text.find(endLine, labelBegin);
    return end == std::string::npos ? text.size() : end + endLine.size();
}

} // namespace

std::string withoutPrivateKeys(std::string text) {
    constexpr std::string_view kPlaceholder = "[private key]";
    std::string result;
    size_t taken = 0;
    size_t begin = text.find(kBegin);
    while (begin != std::string::npos) {
        const size_t labelBegin = begin + kBegin.size();
        const std::string label = text.substr(labelBegin, text.find(kDashes, labelBegin) - labelBegin);
        size_t next = labelBegin;
        if (label.ends_with("PRIVATE KEY")) {
            result.append(text, taken, begin - taken).append(kPlaceholder);
            next = taken = blockEnd(text, label, labelBegin);
        }
        begin = text.find(kBegin, next);
    }
    return taken == 0 ? std::move(text) : result.append(text, taken);
}

} // namespace brask
