#include "dumpsig/output.h"

#include "commons/errors/system_error.h"

#include <boost/algorithm/hex.hpp>

#include <algorithm>
#include <array>
#include <iterator>

#include <errno.h>
#include <poll.h>
#include <unistd.h>

namespace dumpsig {

namespace {

/// Waits until a descriptor that someone else has made non-blocking takes more.
void waitForRoom(int fd) {
    pollfd wanted{.fd = fd, .events = POLLOUT, .revents = 0};
    poll(&wanted, 1, -1);
}

bool isLineEnd(char c) {
    return c == '\n' || c == '\r';
}

bool isWithin(char c, unsigned char first, unsigned char last) {
    const auto byte = static_cast<unsigned char>(c);
    return first <= byte && byte <= last;
}

/// The length of the control character that `text` begins with, 0 when it begins with none. Those above 0x7F
/// have two bytes in UTF-8.
std::size_t controlLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first == 0xC2 && text.size() > 1 && isWithin(text[1], 0x80, 0x9F)) {
        return 2;
    }
    return (first < 0x20 && first != '\t') || first == 0x7F ? 1 : 0;
}

/// The first byte of a character in UTF-8: the range that it is in, the length of the character, and what
/// its second byte may be. These are the well-formed byte sequences of the Unicode standard (table 3-7).
struct Lead {
    unsigned char first;
    unsigned char last;
    std::size_t length;
    unsigned char secondFirst;
    unsigned char secondLast;
};

constexpr auto kLeads = std::to_array<Lead>({{0x00, 0x7F, 1, 0, 0},
                                             {0xC2, 0xDF, 2, 0x80, 0xBF},
                                             {0xE0, 0xE0, 3, 0xA0, 0xBF},
                                             {0xE1, 0xEC, 3, 0x80, 0xBF},
                                             {0xED, 0xED, 3, 0x80, 0x9F},
                                             {0xEE, 0xEF, 3, 0x80, 0xBF},
                                             {0xF0, 0xF0, 4, 0x90, 0xBF},
                                             {0xF1, 0xF3, 4, 0x80, 0xBF},
                                             {0xF4, 0xF4, 4, 0x80, 0x8F}});

/// The length of the character that `text` begins with, 0 when it begins with none.
std::size_t characterLength(std::string_view text) {
    const auto* const lead = std::find_if(kLeads.begin(), kLeads.end(), [&](const Lead& candidate) {
        return isWithin(text[0], candidate.first, candidate.last);
    });
    if (lead == kLeads.end() || text.size() < lead->length) {
        return 0;
    }
    const std::string_view rest = text.substr(1, lead->length - 1);
    const bool isWhole =
        (rest.empty() || isWithin(rest[0], lead->secondFirst, lead->secondLast)) &&
        std::all_of(rest.begin(), rest.end(), [](char c) { return isWithin(c, 0x80, 0xBF); });
    return isWhole ? lead->length : 0;
}

} // namespace

void writeAll(int fd, std::string_view bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            waitForRoom(fd);
        } else if (errno != EINTR) {
            brask::throwSystemError(name, errno);
        }
    }
}

void writeToStandardOutput(std::string_view bytes) {
    writeAll(STDOUT_FILENO, bytes, "standard output");
}

void complain(std::string_view text) {
    try {
        writeAll(STDERR_FILENO, "dumpsig: " + oneLine(text) + "\n", "standard error");
    } catch (const brask::SystemError&) {
        // Nobody is left to be told; the exit code still tells.
    }
}

std::string oneLine(std::string_view text) {
    while (!text.empty() && isLineEnd(text.back())) {
        text.remove_suffix(1);
    }
    std::string line;
    while (!text.empty()) {
        std::size_t length = controlLength(text);
        if (isLineEnd(text[0])) {
            length = text.starts_with("\r\n") ? 2 : 1;
            line += "; ";
        } else if (length > 0) {
            line += '?';
        } else {
            length = 1;
            line += text[0];
        }
        text.remove_prefix(length);
    }
    return line;
}

std::string toUtf8(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        result += length == 0 ? "\xEF\xBF\xBD" : text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

std::string hexadecimal(const unsigned char* bytes, std::size_t size) {
    std::string text;
    boost::algorithm::hex_lower(bytes, bytes + size, std::back_inserter(text));
    return text;
}

} // namespace dumpsig
