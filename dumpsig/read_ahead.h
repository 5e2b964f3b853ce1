#pragma once

#include "dumpsig/volume.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace dumpsig {

/// Bytes read so far, for whoever shows the progress.
using ByteCounter = std::shared_ptr<std::atomic<std::uint64_t>>;

/// Reads the volumes of a dump, one after another, in blocks. From the second block on a thread fills blocks
/// while the caller works on another, so that a disk's or a pipe's time, and the copy out of the page cache,
/// hides behind the hash.
class ReadAhead final {
public:
    struct Block {
        std::string_view bytes;
        /// The place of the volume that they come from. A block never crosses from one into the next, and a
        /// volume may end in an empty block.
        std::size_t volume;
    };

    /// Adds each number of bytes read to `progress`.
    ReadAhead(const Volumes& volumes, ByteCounter progress);
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;
    /// Does not wait for a thread that waits for a pipe: such a one is left to end with the process.
    ~ReadAhead();

    /// The next block, which is there until the next call; nothing at the end, which ends the calls as a
    /// failure does. Raises SystemError when a volume can't be read, and FileError when it turns out shorter
    /// than it was when it was examined.
    std::optional<Block> next();

private:
    class Pipeline;
    std::shared_ptr<Pipeline> pipeline;
};

} // namespace dumpsig
