#include "lib/process/lib/strict_number.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace brask {

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
