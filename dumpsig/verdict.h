#pragma once

#include "backup_sign_lib/digest.h"
#include "dumpsig/key_file.h"
#include "dumpsig/scan.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dumpsig {

enum class Judgement { kIntact, kNotSigned, kDigestWrong, kSignatureWrong, kSignatureUnreadable, kUnknown };

/// What can be said about a dump.
struct Verdict {
    Judgement judgement = Judgement::kUnknown;
    /// Why the dump is not intact, on one line.
    std::string text;
    /// The first key that the dump is signed with, if it is intact. Owned by whoever gave the keys.
    const PublicKey* key = nullptr;
    std::optional<std::uint64_t> signedBytes;
    std::optional<std::uint64_t> documentOffset;
    std::optional<std::uint64_t> documentBytes;
    /// Of what was read, in hexadecimal.
    std::optional<std::string> digest;
};

/// Reads a dump and judges it as backup_sign does, with the exception that a last volume without content of
/// its own plays no special part. All that is hashed goes to `content` as well. Raises what scanDump raises.
Verdict judgeDump(const Volumes& volumes, const std::vector<PublicKey>& keys, const Sink& content,
                  const ByteCounter& progress);

} // namespace dumpsig
