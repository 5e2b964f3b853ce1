#pragma once

#include <utility>

#include <unistd.h>

namespace dumpsig {

/// Owns an open file descriptor. Standard streams, which are nobody's own, are left open.
class Descriptor final {
public:
    explicit Descriptor(int fd) : fd(fd) {}

    Descriptor(Descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() {
        if (fd > STDERR_FILENO) {
            close(fd);
        }
    }

    int get() const { return fd; }

private:
    int fd;
};

} // namespace dumpsig
