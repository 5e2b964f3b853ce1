#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace dumpsig {

/// What a signature document says. Nothing is known until it has been read.
struct DocumentFacts {
    std::optional<std::uint64_t> offset;
    std::optional<std::uint64_t> size;
    /// In hexadecimal.
    std::optional<std::string> digest;
    std::optional<std::string> algorithm;
    std::optional<int> keyBits;
    std::optional<std::string> keyFingerprint;
    std::optional<std::string> keyName;
};

struct FoundDocument;

/// Raises an error of the library's, whose text says why, for a document that can't be read.
DocumentFacts readFacts(const FoundDocument& document);

/// Why what was found is no signature document, on whose account nothing must be cut off. Empty if it is one.
std::string problemOf(const std::optional<FoundDocument>& document);

} // namespace dumpsig
