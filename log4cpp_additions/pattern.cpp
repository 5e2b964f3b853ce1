#include "log4cpp_additions/pattern.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <regex>
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

std::unique_ptr<Component> withWidths(std::unique_ptr<Component> component, const std::string& minWidth,
                                      const std::string& maxWidth) {
    if (minWidth.empty() && maxWidth.empty()) {
        return component;
    }
    return std::make_unique<FixedWidth>(std::move(component), minWidth.empty() ? 0 : std::stoi(minWidth),
                                        maxWidth.empty() ? 0 : std::stoul(maxWidth));
}

} // namespace

ColorPatternLayout::ColorPatternLayout(const std::string& conversionPattern) {
    // One match is one specifier: widths, letter, option in braces. What is malformed matches as some letter
    // that is not ours (so does a width of more digits than an int holds), stays in its segment, and the
    // stock layout judges it.
    static const std::regex specifier(R"(%(-?[0-9]{1,9})?(?:\.([0-9]{1,9}))?([^])(?:\{[^}]*\}?)?)");
    auto segmentBegin = conversionPattern.cbegin();
    bool coloured = false;
    for (std::sregex_iterator match(conversionPattern.begin(), conversionPattern.end(), specifier), end;
         match != end; ++match) {
        const char letter = *(*match)[3].first;
        std::unique_ptr<Component> component;
        if (letter == 'C') {
            component = std::make_unique<log4cpp::ColorizatorComponent>();
            coloured = true;
        } else if (letter == 'P') {
            component = std::make_unique<log4cpp::ProcessIdComponent>();
        } else {
            continue;
        }
        addStockSegment({segmentBegin, (*match)[0].first});
        components.push_back(withWidths(std::move(component), (*match)[1], (*match)[2]));
        segmentBegin = (*match)[0].second;
    }
    addStockSegment({segmentBegin, conversionPattern.cend()});
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
    std::ostringstream out;
    for (const auto& component : components) {
        component->append(out, event);
    }
    return out.str();
}

} // namespace log4cpp_additions
