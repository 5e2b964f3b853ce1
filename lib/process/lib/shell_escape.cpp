#include "lib/process/lib/shell_escape.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace brask {

namespace {

constexpr std::array<char, 256> makeMarks() {
    std::array<char, 256> marks{};
    marks.fill('-');
    for (const char c : std::string_view("\t \"#$&'()*;<>?[\\`|~")) {
        marks[static_cast<unsigned char>(c)] = '*';
    }
    marks['\n'] = 'n';
    return marks;
}

constexpr std::array<char, 256> kMarks = makeMarks();

char markOf(char c) {
    return escape_chars[static_cast<unsigned char>(c)];
}

} // namespace

const char* const escape_chars = kMarks.data();

std::string escapeForShell(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (markOf(c)) {
        case '*':
            escaped += '\\';
            escaped += c;
            break;
        case 'n':
            escaped += '\'';
            escaped += c;
            escaped += '\'';
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string shellQuote(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + '\'';
}

char* backslashEscape(const char* set, const char* text) {
    if (set == nullptr || text == nullptr) {
        return nullptr;
    }
    char* escaped = static_cast<char*>(malloc(2 * strlen(text) + 1));
    if (escaped == nullptr) {
        return nullptr;
    }
    char* end = escaped;
    for (; *text != '\0'; ++text) {
        if (strchr(set, *text) != nullptr) {
            *end++ = '\\';
        }
        *end++ = *text;
    }
    *end = '\0';
    return escaped;
}

bool isSafeWord(const char* text) {
    for (; text != nullptr && *text != '\0'; ++text) {
        if (markOf(*text) != '-') {
            return false;
        }
    }
    return true;
}

void checkEscapeChars(const char* const* text) {
    if (!isSafeWord(*text)) {
        throw std::runtime_error("Internal error: bad escape_chars value");
    }
}

} // namespace brask
