#include "log4cpp_additions/pattern.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include <unistd.h>

namespace {

struct Colour {
    const char* code;
    bool bold;
};

// Indexed by the hundreds of the priority. EMERG and FATAL share the value 0.
constexpr std::array<Colour, 10> kColours{{
    {"31", true},  // EMERG, FATAL
    {"31", true},  // ALERT
    {"31", false}, // CRIT
    {"31", false}, // ERROR
    {"33", false}, // WARN
    {"34", false}, // NOTICE
    {"37", false}, // INFO
    {"32", false}, // DEBUG
    {"37", false}, // NOTSET
    {"30", true},  // any value above
}};

const Colour& colourOf(log4cpp::Priority::Value priority) {
    // The last value of each hundred counts as the next row: 99 is shown as an ALERT.
    const long row = (static_cast<long>(priority) + 1) / 100;
    return kColours.at(static_cast<std::size_t>(std::clamp(row, 0L, static_cast<long>(kColours.size()) - 1)));
}

} // namespace

namespace log4cpp {

void ColorizatorComponent::append(std::ostringstream& out, const LoggingEvent& event) {
    const Colour& colour = colourOf(event.priority);
    out << "\x1b[" << colour.code << 'm';
    if (colour.bold) {
        out << "\x1b[1m";
    }
}

void UncolorizatorComponent::append(std::ostringstream& out, const LoggingEvent& /*event*/) {
    out << "\x1b[0;39m";
}

void ProcessIdComponent::append(std::ostringstream& out, const LoggingEvent& /*event*/) {
    out << getpid();
}

} // namespace log4cpp

namespace log4cpp_additions {

namespace {

using Component = log4cpp::PatternLayout::PatternComponent;

/// A piece of the pattern that the stock layout understands.
class StockSegment final : public Component {
public:
    explicit StockSegment(const std::string& pattern) { layout.setConversionPattern(pattern); }

    void append(std::ostringstream& out, const log4cpp::LoggingEvent& event) override {
        out << layout.format(event);
    }

private:
    log4cpp::PatternLayout layout;
};

/// %m, without the two copies of the text that the stock layout makes.
class MessageComponent final : public Component {
public:
    void append(std::ostringstream& out, const log4cpp::LoggingEvent& event) override {
        out << event.message;
    }
};

/// A component with the widths of its specifier; 0 means that none was given.
class FixedWidth final : public Component {
public:
    FixedWidth(std::unique_ptr<Component> component, int minWidth, std::size_t maxWidth)
        : component(std::move(component)), minWidth(static_cast<std::size_t>(std::abs(minWidth))),
          maxWidth(maxWidth), alignLeft(minWidth < 0) {}

    void append(std::ostringstream& out, const log4cpp::LoggingEvent& event) override {
        std::ostringstream plain;
        component->append(plain, event);
        std::string text = plain.str();
        if (maxWidth > 0 && text.size() > maxWidth) {
            text.resize(maxWidth);
        }
        if (text.size() < minWidth) {
            text.insert(alignLeft ? text.size() : 0, minWidth - text.size(), ' ');
        }
        out << text;
    }

private:
    std::unique_ptr<Component> component;
    std::size_t minWidth;
    std::size_t maxWidth;
    bool alignLeft;
};

/// A conversion specifier, such as "%-8.3P{option}".
struct Specifier {
    int minWidth = 0; // 0 for none, below 0 to align left
    std::size_t maxWidth = 0;
    char letter = '\0';
    std::size_t end = 0; // the place after it
};

std::string digitsAt(const std::string& text, std::size_t at) {
    constexpr std::size_t kMostDigits = 9; // that an int holds for sure
    const std::size_t end = std::min(text.find_first_not_of("0123456789", at), at + kMostDigits);
    return text.substr(at, end - at);
}

/// Reads the specifier whose percent sign precedes `at`. A malformed one comes out with a letter
/// that is not ours, so that it stays with the stock layout, which judges it.
Specifier readSpecifier(const std::string& pattern, std::size_t at) {
    Specifier specifier;
    const std::size_t sign = pattern[at] == '-' ? 1 : 0;
    if (const std::string digits = digitsAt(pattern, at + sign); !digits.empty()) {
        specifier.minWidth = std::stoi(digits) * (sign == 1 ? -1 : 1);
        at += sign + digits.size();
    }
    if (pattern[at] == '.') {
        if (const std::string digits = digitsAt(pattern, at + 1); !digits.empty()) {
            specifier.maxWidth = std::stoul(digits);
            at += 1 + digits.size();
        }
    }
    specifier.letter = pattern[at++];
    if (at < pattern.size() && pattern[at] == '{') {
        const std::size_t close = pattern.find('}', at);
        at = close == std::string::npos ? pattern.size() : close + 1;
    }
    specifier.end = std::min(at, pattern.size());
    return specifier;
}

std::unique_ptr<Component> makeComponent(const Specifier& specifier) {
    std::unique_ptr<Component> component;
    if (specifier.letter == 'C') {
        component = std::make_unique<log4cpp::ColorizatorComponent>();
    } else if (specifier.letter == 'P') {
        component = std::make_unique<log4cpp::ProcessIdComponent>();
    } else if (specifier.letter == 'm') {
        component = std::make_unique<MessageComponent>();
    }
    if (component && (specifier.minWidth != 0 || specifier.maxWidth != 0)) {
        return std::make_unique<FixedWidth>(std::move(component), specifier.minWidth, specifier.maxWidth);
    }
    return component;
}

} // namespace

ColorPatternLayout::ColorPatternLayout(const std::string& conversionPattern) {
    bool coloured = false;
    std::size_t segmentBegin = 0;
    std::size_t percent = 0;
    while ((percent = conversionPattern.find('%', percent)) != std::string::npos) {
        const Specifier specifier = readSpecifier(conversionPattern, percent + 1);
        if (auto component = makeComponent(specifier)) {
            addStockSegment(conversionPattern.substr(segmentBegin, percent - segmentBegin));
            components.push_back(std::move(component));
            coloured = coloured || specifier.letter == 'C';
            segmentBegin = specifier.end;
        }
        percent = specifier.end;
    }
    addStockSegment(conversionPattern.substr(segmentBegin));
    if (coloured) {
        components.push_back(std::make_unique<log4cpp::UncolorizatorComponent>());
    }
}

void ColorPatternLayout::addStockSegment(const std::string& pattern) {
    if (!pattern.empty()) {
        components.push_back(std::make_unique<StockSegment>(pattern));
    }
}

std::string ColorPatternLayout::format(const log4cpp::LoggingEvent& event) {
    // A stream that grows on its own doubles, and copies, a long message again and again.
    std::string space;
    space.reserve(event.message.size() + 256);
    std::ostringstream out(std::move(space));
    for (const auto& component : components) {
        component->append(out, event);
    }
    return std::move(out).str();
}

} // namespace log4cpp_additions
