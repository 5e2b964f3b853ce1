#pragma once

// What the library adds to log4cpp's conversion patterns: %C, which colours a line by its priority, and %P,
// the process id.

#include <log4cpp/Layout.hh>
#include <log4cpp/PatternLayout.hh>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace log4cpp {

/// %C: the terminal's escape sequence for the colour of the event's priority. Written whatever the target is:
/// a pattern that has %C asks for it.
class ColorizatorComponent : public PatternLayout::PatternComponent {
public:
    void append(std::ostringstream& out, const LoggingEvent& event) override;
};

/// The end of a coloured line: the escape sequence that goes back to the terminal's own colour.
class UncolorizatorComponent : public PatternLayout::PatternComponent {
public:
    void append(std::ostringstream& out, const LoggingEvent& event) override;
};

/// %P: the id of the process that logs, asked for at each event, so that a forked child shows its own.
class ProcessIdComponent : public PatternLayout::PatternComponent {
public:
    void append(std::ostringstream& out, const LoggingEvent& event) override;
};

} // namespace log4cpp

namespace log4cpp_additions {

/// log4cpp::PatternLayout with %C and %P beside its own specifiers. Both take width modifiers as the others
/// do
/// ("%-8P"). One %C colours everything from its place to the end of the pattern, the newline of a %n
/// included; the colour can't be closed earlier.
class ColorPatternLayout final : public log4cpp::Layout {
public:
    /// Raises log4cpp::ConfigureFailure for a pattern that the stock layout refuses, too.
    explicit ColorPatternLayout(const std::string& conversionPattern);

    std::string format(const log4cpp::LoggingEvent& event) override;

private:
    using Component = log4cpp::PatternLayout::PatternComponent;

    void addStockSegment(const std::string& pattern);

    std::vector<std::unique_ptr<Component>> components;
};

} // namespace log4cpp_additions
