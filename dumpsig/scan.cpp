#include "dumpsig/scan.h"

#include "backup_sign_lib/dump_signature.h"

#include <algorithm>

namespace dumpsig {

void Window::push(std::string_view bytes) {
    const std::size_t total = bytesHeld.size() + bytes.size();
    std::size_t excess = total - std::min(total, capacity);
    const std::size_t oldest = std::min(excess, bytesHeld.size());
    release(oldest);
    excess -= oldest;
    if (excess > 0) {
        sink(bytes.substr(0, excess));
        bytes.remove_prefix(excess);
    }
    bytesHeld.append(bytes);
}

void Window::release(std::size_t count) {
    if (count > 0) {
        sink(std::string_view(bytesHeld).substr(0, count));
        bytesHeld.erase(0, count);
    }
}

std::optional<FoundDocument> findDocument(const Tail& tail) {
    const std::size_t place = brask::findSignature(tail.bytes);
    if (place == std::string::npos) {
        return std::nullopt;
    }
    return FoundDocument{.text = tail.bytes.substr(place), .offset = tail.end - tail.bytes.size() + place};
}

std::optional<FoundDocument> scanDump(const Volumes& volumes, const Sink& content,
                                      const ByteCounter& progress) {
    // Only the last volume is searched, whatever the one before it ends with.
    Window tail(brask::kSignatureTailRange, content);
    std::uint64_t sizeOfLast = 0;
    ReadAhead reader(volumes, progress);
    while (const auto block = reader.next()) {
        if (block->volume + 1 < volumes.size()) {
            content(block->bytes);
        } else {
            tail.push(block->bytes);
            sizeOfLast += block->bytes.size();
        }
    }
    const std::optional<FoundDocument> document = findDocument({.bytes = tail.held(), .end = sizeOfLast});
    tail.release(tail.held().size() - (document ? document->text.size() : 0));
    return document;
}

} // namespace dumpsig
