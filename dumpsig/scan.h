#pragma once

#include "dumpsig/read_ahead.h"
#include "dumpsig/volume.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dumpsig {

/// Takes bytes in pieces of any size. What it is given does not outlive the call.
using Sink = std::function<void(std::string_view)>;

/// The end of a stream that has not ended yet: passes on what goes through, but holds the last bytes back.
class Window final {
public:
    Window(std::size_t capacity, Sink sink) : capacity(capacity), sink(std::move(sink)) {}

    void push(std::string_view bytes);

    /// What is held back: the last `capacity` bytes, or all there were.
    const std::string& held() const { return bytesHeld; }

    /// Passes on the first `count` of the bytes held back.
    void release(std::size_t count);

private:
    const std::size_t capacity;
    const Sink sink;
    std::string bytesHeld;
};

/// The text after the content of a dump that begins as a signature document does.
struct FoundDocument {
    std::string text;
    /// Where it begins in the last volume.
    std::uint64_t offset;
};

/// The last document in the end of a volume.
std::optional<FoundDocument> findDocument(const Tail& tail);

/// What is said of a dump without a document.
inline constexpr const char* kNotSigned = "Dump is not signed";

/// Reads a dump once, from its first byte to its last, in constant memory. `content` gets all that
/// precedes the document, or everything when there is none. Raises what ReadAhead raises.
std::optional<FoundDocument> scanDump(const Volumes& volumes, const Sink& content,
                                      const ByteCounter& progress);

} // namespace dumpsig
