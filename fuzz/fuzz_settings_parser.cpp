// Any text is parsed, or refused at one of its lines. Line ends, a byte order mark and what comes in front
// don't change what is read, and values that were read can be written again.

#include "commons/panel/settings_parser.h"
#include "fuzz/fuzz.h"

#include <algorithm>
#include <optional>

namespace {

using brask::SettingsMap;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The values of a text, or nothing when it breaks the syntax, and which line of it does.
std::optional<SettingsMap> parse(const std::string& text) {
    try {
        return brask::SettingsParser().parse(text);
    } catch (const brask::ParseError& e) {
        const std::string message = e.what();
        const std::size_t place = message.rfind("Line ");
        const long line = place == std::string::npos ? 1 : std::stol(message.substr(place + 5));
        fuzz::require(place != std::string::npos || text.find('\0') != std::string::npos,
                      "the message names the place");
        fuzz::require(line >= 1 && line <= std::count(text.begin(), text.end(), '\n') + 1,
                      "the line that it names is one of the text");
        return std::nullopt;
    }
}

void checkLineEnds(const std::string& text, const std::optional<SettingsMap>& values) {
    std::string windows;
    for (const char c : text) {
        windows += c == '\n' ? "\r\n" : std::string(1, c);
    }
    fuzz::require(parse(windows) == values, "the form of line ends doesn't matter");
    fuzz::require(text.starts_with(kByteOrderMark) || parse(std::string(kByteOrderMark) + text) == values,
                  "a byte order mark doesn't matter");
}

/// The values as a text of their own, and what it has to be parsed to.
std::pair<std::string, SettingsMap> writeAgain(const SettingsMap& values) {
    std::pair<std::string, SettingsMap> written{"[again]\n", {}};
    for (const auto& [key, value] : values) {
        const char quote = value.find('"') == std::string::npos ? '"' : '\'';
        if (value.find(quote) == std::string::npos) {
            const std::string name = "k" + std::to_string(written.second.size());
            written.first += name + "=" + quote + value + quote + "\n";
            written.second["again." + name] = value;
        }
    }
    return written;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::textOf(data, size));
    const std::optional<SettingsMap> values = parse(text);
    checkLineEnds(text, values);
    if (!values) {
        return 0;
    }
    for (const auto& [key, value] : *values) {
        fuzz::require(text.find(value) != std::string::npos, "a value is a piece of the text");
        fuzz::require(key.find('\n') == std::string::npos && key.find('.') != std::string::npos,
                      "a key has a dot");
    }
    const auto [written, again] = writeAgain(*values);
    fuzz::require(parse(written) == again, "what was read can be written");
    SettingsMap all = again;
    all.insert(values->begin(), values->end());
    for (const auto& [key, value] : again) {
        all[key] = value;
    }
    fuzz::require(parse(text + "\n" + written) == all, "later lines don't depend on earlier ones");
    return 0;
}
