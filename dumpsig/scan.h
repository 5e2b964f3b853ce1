#pragma once

#include "dumpsig/read_ahead.h"
#include "dumpsig/volume.h"
#include "dumpsig/window.h"

#include <cstdint>
#include <optional>
#include <string>

namespace dumpsig {

/// The text behind the content of a dump that begins as a signature document does.
struct FoundDocument {
    std::string text;
    /// Where it begins in the last volume.
    std::uint64_t offset;
};

/// The last document in the end of a volume.
std::optional<FoundDocument> findDocument(const Tail& tail);

/// What is said of a dump without a document.
inline constexpr const char* kNotSigned = "Dump is not signed";

/// Reads a dump once, from its first byte to its last, in constant memory. `content` gets all that stands in
/// front of the document, or everything when there is none. Raises what ReadAhead raises.
std::optional<FoundDocument> scanDump(const Volumes& volumes, const Sink& content,
                                      const ByteCounter& progress);

} // namespace dumpsig
