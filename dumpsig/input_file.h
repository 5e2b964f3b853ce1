#pragma once

#include "dumpsig/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace dumpsig {

/// The end of a file.
struct Tail {
    std::string bytes;
    /// Where the file ends.
    std::uint64_t end;
};

/// What messages call a file: its path as given, or "standard input" for "-".
std::string shownName(const std::string& path);

/// A file, pipe or device that is open for reading. Failures are SystemErrors that name it.
class InputFile final {
public:
    /// Opens `path`, or takes standard input for "-". A directory fails with EISDIR. Opening a pipe waits for
    /// its writer.
    explicit InputFile(const std::string& path);

    InputFile(const std::string& path, Descriptor file)
        : messageName(shownName(path)), file(std::move(file)) {}

    const std::string& name() const { return messageName; }

    int descriptor() const { return file.get(); }

    /// The bytes left to read in a regular file; nothing for what only tells its end by ending.
    std::optional<std::uint64_t> size() const;

    /// Stores up to `size` bytes and returns their number, 0 at the end only. Waits where a read would block.
    std::size_t readSome(char* buffer, std::size_t size);

    /// The same, but less than `size` at the end only.
    std::size_t readFully(char* buffer, std::size_t size);

    /// The last bytes of a regular file, at most `limit`; reading is not moved by it. Raises FileError when
    /// the file shrinks meanwhile.
    Tail readTail(std::size_t limit) const;

private:
    std::string messageName;
    Descriptor file;
};

} // namespace dumpsig
