#include "commons/text/text_utils.h"

#include "commons/errors/format.h"
#include "commons/errors/system_error.h"

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <regex>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <iconv.h>

namespace brask {

namespace {

constexpr size_t kMaxLines = 30;

/// An open conversion of iconv.
class Conversion {
public:
    Conversion(const char* to, const char* from) : descriptor(iconv_open(to, from)) {
        if (descriptor == reinterpret_cast<iconv_t>(-1)) { // NOLINT(performance-no-int-to-ptr)
            throwErrno("Unable to create a conversion descriptor");
        }
    }

    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    ~Conversion() { iconv_close(descriptor); }

    /// Moves all four on by what was converted, and returns 0 or the errno that stopped the conversion.
    int convert(char*& in, size_t& inLeft, char*& out, size_t& outLeft) const {
        return iconv(descriptor, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1) ? errno : 0;
    }

private:
    iconv_t descriptor;
};

int random() {
    static bool seeded = false;
    if (!seeded) {
        std::srand(static_cast<unsigned>(std::time(nullptr)));
        seeded = true;
    }
    return std::rand();
}

size_t randomBelow(size_t limit) {
    return static_cast<size_t>(random()) % limit;
}

char randomCharacter(std::string_view alphabet) {
    return alphabet[randomBelow(alphabet.size())];
}

} // namespace

std::string SanitizeUtf8(const std::string& text) {
    const Conversion conversion("UTF-8", "UTF-8");
    std::string input = text; // iconv takes its input as writable
    std::string output(input.size(), '\0');
    char* in = input.data();
    size_t inLeft = input.size();
    char* out = output.data();
    size_t outLeft = output.size();
    while (inLeft > 0) {
        const int failure = conversion.convert(in, inLeft, out, outLeft);
        if (failure == E2BIG || failure == EINVAL) {
            break;
        }
        if (failure == EILSEQ) {
            // There is room: so far the output is no longer than the input that it replaces.
            *out++ = '?';
            --outLeft;
            ++in;
            --inLeft;
        } else if (failure != 0) {
            throwErrno("Unable to convert an input string", failure);
        }
    }
    output.resize(output.size() - outLeft);
    return output;
}

std::string escapeRegex(const std::string& text) {
    static const std::regex special(R"([.+*?^$(){}=!<>|:#[\]\\-])");
    return std::regex_replace(text, special, R"(\$&)");
}

std::string truncateLines(const std::string& text) {
    std::vector<std::string> lines;
    boost::algorithm::split(lines, text, [](char c) { return c == '\r' || c == '\n'; });
    if (lines.size() > kMaxLines) {
        lines.resize(kMaxLines);
        lines.emplace_back("... (truncated)");
    }
    return boost::algorithm::join(lines, "\n");
}

int compressionLevelFor(int method, unsigned level) {
    constexpr std::array<std::array<int, 5>, 2> levels{{{0, 3, 5, 7, 9}, {0, 3, 5, 11, 19}}};
    if (method < 0 || static_cast<size_t>(method) >= levels.size()) {
        throw std::runtime_error(fmtlib::format("Invalid compression method: {}", method));
    }
    const auto& ofMethod = levels[static_cast<size_t>(method)];
    if (level >= ofMethod.size()) {
        throw std::runtime_error(fmtlib::format("Invalid compression level: {}", level));
    }
    return ofMethod[level];
}

tm toLocalTime(std::chrono::system_clock::time_point when) {
    const time_t seconds = std::chrono::system_clock::to_time_t(when);
    tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        throwErrno("Failed to convert time");
    }
    return local;
}

std::string formatTimestamp(std::chrono::system_clock::time_point when) {
    const tm local = toLocalTime(when);
    std::array<char, 80> buffer{};
    return {buffer.data(), std::strftime(buffer.data(), buffer.size(), "%Y%m%dT%H%M%S", &local)};
}

std::string randomName() {
    constexpr size_t length = 7;
    std::string name;
    while (name.size() < length) {
        name += randomCharacter("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789");
    }
    return name;
}

std::string randomPassword(int length) {
    constexpr std::array<std::string_view, 4> classes{"1234567890", "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
                                                      "abcdefghijklmnopqrstuvwxyz", "~!@#$;%^&()-_+=,.{}[]"};
    std::string password;
    for (int i = 0; i < length; ++i) {
        // One of each class first, then of any.
        const size_t next = password.size() < classes.size() ? password.size() : randomBelow(classes.size());
        password += randomCharacter(classes[next]);
    }
    for (size_t i = password.size(); i > 1; --i) {
        std::swap(password[i - 1], password[randomBelow(i)]);
    }
    return password;
}

} // namespace brask
