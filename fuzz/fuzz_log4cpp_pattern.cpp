// A conversion pattern without %C and %P means what it means to the stock layout. With them, each stands for
// its own text, and the rest for what it means alone.

#include "fuzz/fuzz.h"
#include "log4cpp_additions/pattern.h"

#include <log4cpp/Configurator.hh>
#include <log4cpp/LoggingEvent.hh>
#include <log4cpp/PatternLayout.hh>

#include <cctype>
#include <optional>
#include <regex>

namespace {

constexpr std::size_t kLongest = 64;

const log4cpp::LoggingEvent& event() {
    static const log4cpp::LoggingEvent error("category", "message", "context", log4cpp::Priority::ERROR);
    return error;
}

/// What a layout makes of the event, or nothing when it refuses the pattern.
template <class Layout>
std::optional<std::string> format(Layout&& makeLayout) {
    try {
        return makeLayout()->format(event());
    } catch (const log4cpp::ConfigureFailure&) {
        return std::nullopt;
    }
}

std::optional<std::string> ours(const std::string& pattern) {
    return format([&] { return std::make_unique<log4cpp_additions::ColorPatternLayout>(pattern); });
}

std::optional<std::string> stock(const std::string& pattern) {
    return format([&] {
        auto layout = std::make_unique<log4cpp::PatternLayout>();
        layout->setConversionPattern(pattern);
        return layout;
    });
}

/// A width of thousands is granted, too, but takes its time.
bool isTooWide(std::string_view pattern) {
    std::size_t digits = 0;
    for (const char c : pattern) {
        digits = std::isdigit(static_cast<unsigned char>(c)) != 0 ? digits + 1 : 0;
        if (digits > 3) {
            return true;
        }
    }
    return false;
}

/// The stock layout takes the width of a percent sign or a line end, which have none, for that of the next
/// specifier.
bool hasStrayWidth(const std::string& pattern) {
    static const std::regex strayWidth("%[-+.0-9\\s]+[%n]");
    return std::regex_search(pattern, strayWidth);
}

/// The stock layout has 100 bytes for a date with a format, and shows whatever is there when it takes more:
/// %l becomes digits in it, which are a width after a percent sign.
bool hasLongDate(const std::string& pattern) {
    static const std::regex longDate("d\\{([^}]{9}|[^}]*([0-9]|%%))");
    return std::regex_search(pattern, longDate);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string pattern(fuzz::textOf(data, std::min(size, kLongest)));
    if (isTooWide(pattern) || hasStrayWidth(pattern) || hasLongDate(pattern)) {
        return 0;
    }
    const std::optional<std::string> own = ours(pattern);
    // %u is the time that the process has used.
    if (pattern.find_first_of("CPu") != std::string::npos) {
        return 0;
    }
    const std::optional<std::string> rest = stock(pattern);
    fuzz::require(own == rest, "the stock layout gives the same");
    const std::optional<std::string> coloured = ours("%P%C|" + pattern);
    fuzz::require(coloured.has_value() == rest.has_value(), "our own specifiers refuse nothing");
    fuzz::require(!rest || coloured.value() == std::to_string(getpid()) + "\x1b[31m|" + *rest + "\x1b[0;39m",
                  "our own specifiers change nothing else");
    return 0;
}
