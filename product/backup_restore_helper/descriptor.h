#pragma once

#include <string>
#include <string_view>

#include <unistd.h>

namespace backup_restore_helper {

/// Owns an open file descriptor. A value below 0 owns nothing.
class Descriptor final {
public:
    explicit Descriptor(int fd) : fd(fd) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() {
        if (fd >= 0) {
            close(fd);
        }
    }

    bool isOpen() const { return fd >= 0; }

    int get() const { return fd; }

private:
    const int fd;
};

/// Reads to the end of the file, but stops after `limit` bytes. `name` is what a Failure calls the file.
std::string readAtMost(int fd, size_t limit, const std::string& name);

/// Writes the whole text. `name` is what a Failure calls the file.
void writeAll(int fd, std::string_view text, const std::string& name);

/// Makes sure that descriptors 0, 1 and 2 are taken, so that no file opened later becomes a standard stream.
/// One that was closed is opened the wrong way round: it still can't be read or written, but now with an
/// error.
void reserveStandardStreams();

} // namespace backup_restore_helper
