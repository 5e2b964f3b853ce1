#include "lib/process/lib/closefrom.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <dirent.h>
#include <unistd.h>

namespace brask {

namespace {

enum class Entry { kRead, kEnd, kError };

Entry readEntry(DIR* directory, dirent64& entry) {
    dirent64* result = nullptr;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    // The one that works on storage of ours: between fork and exec the less is left to the library the
    // better.
    const int error = readdir64_r(directory, &entry, &result);
#pragma GCC diagnostic pop
    if (error != 0) {
        return Entry::kError;
    }
    return result != nullptr ? Entry::kRead : Entry::kEnd;
}

/// Closes the listed descriptors until the listing ends (0) or can't be followed any further (-1).
int closeListed(DIR* directory, int lowestFd, bool& ownFdSeen) {
    const int maxOpen = getdtablesize();
    int budget = maxOpen >= 1000 ? maxOpen / 10 : 100;
    for (;;) {
        dirent64 entry;
        switch (readEntry(directory, entry)) {
        case Entry::kError:
            return -1;
        case Entry::kEnd:
            return 0;
        case Entry::kRead:
            break;
        }
        if (strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0) {
            continue;
        }
        const int fd = parseStrictNumber(entry.d_name);
        if (fd < 0 || fd >= maxOpen) {
            return -1;
        }
        if (fd == dirfd(directory)) {
            ownFdSeen = true;
        } else if (fd >= lowestFd) {
            close(fd);
        }
        if (budget <= 0) {
            return -1;
        }
        --budget;
    }
}

/// Returns 0 when all descriptors of a listing that can be trusted were walked, -1 otherwise.
int closeByListing(int lowestFd) {
    DIR* directory = opendir("/proc/self/fd");
    if (directory == nullptr) {
        return -1;
    }
    bool ownFdSeen = false;
    const int result = closeListed(directory, lowestFd, ownFdSeen);
    closedir(directory);
    // A listing without the descriptor that it is read through is not that of this process.
    return ownFdSeen ? result : -1;
}

} // namespace

void closefrom(int lowestFd) {
    const int error = errno;
    // Kernels before 5.9 and the system call filters of some containers have no close_range.
    if (close_range(lowestFd, ~0U, 0) != 0 && closeByListing(lowestFd) != 0) {
        for (int fd = getdtablesize(); fd >= lowestFd; --fd) {
            close(fd);
        }
    }
    errno = error;
}

int parseStrictNumber(const char* text) {
    if (text == nullptr || *text < '0' || *text > '9' || (text[0] == '0' && text[1] != '\0')) {
        return -1;
    }
    const int previousError = errno;
    errno = 0;
    char* end = nullptr;
    const long value = strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || value > std::numeric_limits<int>::max()) {
        return -1;
    }
    errno = previousError;
    return static_cast<int>(value);
}

} // namespace brask
