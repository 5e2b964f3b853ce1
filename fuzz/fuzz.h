#pragma once

// What the fuzz targets share. A target is given bytes and asserts what must hold for all of them.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

/// Called by libFuzzer, or by replay.cpp, for one input after another.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the process, which is how libFuzzer learns of a finding, unless the property holds.
inline void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        std::abort();
    }
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// The bytes of an input as numbers and pieces, from its first byte on.
class Input final {
public:
    Input(const std::uint8_t* data, std::size_t size) : left(textOf(data, size)) {}

    /// 0 after the end.
    unsigned byte() { return take(1).empty() ? 0 : static_cast<unsigned char>(*(left.data() - 1)); }

    /// A number up to `most`, which is at most 0xFFFF.
    std::size_t number(std::size_t most) {
        const std::size_t high = byte();
        return (high << 8U | byte()) % (most + 1);
    }

    /// The next bytes, or fewer at the end.
    std::string_view take(std::size_t size) {
        const std::string_view taken = left.substr(0, size);
        left.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest() { return take(left.size()); }

private:
    std::string_view left;
};

/// The pieces of a text between its `separator`s.
inline std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (std::size_t end = 0; (end = text.find(separator)) != std::string_view::npos;) {
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    pieces.emplace_back(text);
    return pieces;
}

/// A regular file that is on no disk, for functions that take a path.
class MemoryFile final {
public:
    MemoryFile() : fd(memfd_create("fuzz", MFD_CLOEXEC)), name("/proc/self/fd/" + std::to_string(fd)) {}

    explicit MemoryFile(std::string_view text) : MemoryFile() { write(text); }

    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    ~MemoryFile() { close(fd); }

    const std::string& path() const { return name; }

    void write(std::string_view text) const {
        require(ftruncate(fd, 0) == 0 &&
                    pwrite(fd, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                "a file in memory can be written");
    }

    std::string read() const {
        std::string text(static_cast<std::size_t>(lseek(fd, 0, SEEK_END)), '\0');
        require(pread(fd, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                "a file in memory can be read");
        return text;
    }

private:
    const int fd;
    const std::string name;
};

} // namespace fuzz
