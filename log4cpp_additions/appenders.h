#pragma once

// The appenders of a property file.

#include "log4cpp_additions/open_log.h"
#include "log4cpp_additions/properties.h"

#include <log4cpp/Appender.hh>

#include <memory>
#include <string>

namespace log4cpp_additions {

/// What a property file says about one appender: its properties "appender.NAME" and below.
class AppenderProperties {
public:
    AppenderProperties(const std::string& name, const Properties& properties)
        : name(name), prefix("appender." + name), properties(properties) {}

    /// The property `key`, such as ".fileName", or `fallback` when the file does not have it.
    std::string text(const std::string& key, const std::string& fallback) const;
    /// 0 for what is no number.
    int number(const std::string& key, int fallback) const;
    /// Anything but "true" is false.
    bool flag(const std::string& key, bool fallback) const;
    /// The type in a value such as "org.apache.log4j.FileAppender": what follows the last dot. Empty
    /// when the file does not have the property.
    std::string type(const std::string& key) const;

    bool has(const std::string& key) const { return properties.contains(prefix + key); }

    const std::string name;

private:
    const std::string prefix;
    const Properties& properties;
};

/// Makes an appender with its layout and its threshold. Raises log4cpp::ConfigureFailure.
std::unique_ptr<log4cpp::Appender> makeAppender(const AppenderProperties& properties, const OpenLog& openLog);

/// Whether the appender logs to the file of `openLog`, under that name or another one.
bool writesTo(const OpenLog& openLog, const AppenderProperties& properties);

} // namespace log4cpp_additions
