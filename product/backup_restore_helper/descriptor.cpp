#include "product/backup_restore_helper/descriptor.h"

#include "product/backup_restore_helper/failure.h"

#include <fcntl.h>

namespace backup_restore_helper {

std::string readAtMost(int fd, size_t limit, const std::string& name) {
    std::string text(limit, '\0');
    size_t size = 0;
    while (size < limit) {
        const ssize_t count = TEMP_FAILURE_RETRY(read(fd, text.data() + size, limit - size));
        if (count < 0) {
            failSystemCall("read " + name);
        }
        if (count == 0) {
            break;
        }
        size += static_cast<size_t>(count);
    }
    text.resize(size);
    return text;
}

void writeAll(int fd, std::string_view text, const std::string& name) {
    while (!text.empty()) {
        const ssize_t count = TEMP_FAILURE_RETRY(write(fd, text.data(), text.size()));
        if (count < 0) {
            failSystemCall("write " + name);
        }
        text.remove_prefix(static_cast<size_t>(count));
    }
}

void reserveStandardStreams() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open takes the lowest free number, which is this one: those below are taken by now.
        if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) {
            failSystemCall("open /dev/null");
        }
    }
}

} // namespace backup_restore_helper
