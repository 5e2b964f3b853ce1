// Any property file gives keys and values, or grows beyond its bound. Values without references come through
// as they are, variables as they are, and what configures the log either does it or leaves the categories
// as they were.

#include "fuzz/fuzz.h"
#include "log4cpp_additions/configure.h"
#include "log4cpp_additions/properties.h"

#include <log4cpp/Category.hh>
#include <log4cpp/Configurator.hh>

#include <algorithm>
#include <optional>
#include <sstream>

namespace {

using log4cpp_additions::Properties;

const Properties& variables() {
    static const Properties values{{"LOG", "/a b/${LOG}#=%{x}"}, {"EMPTY", ""}};
    return values;
}

/// The properties of a text, or nothing when they are refused.
std::optional<Properties> load(const std::string& text) {
    static const bool isolated = clearenv() == 0;
    fuzz::require(isolated, "the environment is empty");
    try {
        std::istringstream stream(text);
        return log4cpp_additions::loadProperties(stream, variables());
    } catch (const log4cpp::ConfigureFailure&) {
        return std::nullopt;
    }
}

/// Whether a configuration only has appenders that write to nothing but the standard streams.
bool isHarmless(const Properties& properties) {
    return std::none_of(properties.begin(), properties.end(), [](const auto& property) {
        return property.second.find("FileAppender") != std::string::npos ||
               property.second.find("SyslogAppender") != std::string::npos ||
               property.second.find("AbortAppender") != std::string::npos;
    });
}

void checkConfigure(const std::string& text) {
    static int left = 20'000; // Appenders and categories live as long as the process.
    static const fuzz::MemoryFile file;
    if (left == 0) {
        return;
    }
    file.write(text);
    const log4cpp::Category& root = log4cpp::Category::getRoot();
    const auto appenders = root.getAllAppenders();
    const auto priority = root.getPriority();
    try {
        log4cpp_additions::configure(file.path(), variables());
        --left;
    } catch (const log4cpp::ConfigureFailure&) {
        fuzz::require(root.getAllAppenders() == appenders && root.getPriority() == priority,
                      "a failure leaves the categories as they were");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::textOf(data, size));
    const std::optional<Properties> properties = load(text);
    if (!properties) {
        return 0;
    }
    std::string plain;
    Properties expected;
    for (const auto& [key, value] : *properties) {
        fuzz::require(value.size() <= 2'000'000, "a value has a bound");
        if (value.find_first_of("$#\n") == std::string::npos &&
            key.find_first_of("#\n") == std::string::npos && log4cpp_additions::trim(value) == value) {
            plain.append("log4cpp.").append(key).append("=").append(value).append("\n");
            expected[key] = value;
        }
    }
    fuzz::require(load(plain) == expected, "what has no reference comes through");

    Properties probed = *properties;
    probed["fuzz.probe"] = "[" + variables().at("LOG") + "]";
    const auto seen = load("log4j.fuzz.probe = [${EMPTY}${LOG}]\n" + text);
    fuzz::require(text.find("fuzz.probe") != std::string::npos || seen == probed,
                  "a variable comes through as it is");
    if (isHarmless(*properties)) {
        checkConfigure(text);
    }
    return 0;
}
