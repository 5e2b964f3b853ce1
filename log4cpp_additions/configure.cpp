#include "log4cpp_additions/configure.h"

#include "log4cpp_additions/pattern.h"
#include "log4cpp_additions/properties.h"

#include <log4cpp/Appender.hh>
#include <log4cpp/Category.hh>

#include <fstream>
#include <memory>
#include <vector>

namespace log4cpp_additions {

namespace {

constexpr const char* kAppenderPrefix = "appender.";

/// The type in a value such as "org.apache.log4j.FileAppender": what stands behind the last dot.
std::string typeOf(const std::string& value) {
    return value.substr(value.rfind('.') + 1);
}

std::string keyOf(const std::string& appenderName) {
    return kAppenderPrefix + appenderName;
}

/// The names of the appenders that the file defines.
std::vector<std::string> appenderNames(const Properties& properties) {
    std::vector<std::string> names;
    const std::string prefix = kAppenderPrefix;
    for (const auto& [key, value] : properties) {
        if (key.starts_with(prefix) && key.find('.', prefix.size()) == std::string::npos) {
            names.push_back(key.substr(prefix.size()));
        }
    }
    return names;
}

void translateStderrAppenders(Properties& properties, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        std::string& type = properties.at(keyOf(name));
        if (typeOf(type) == "StderrAppender") {
            type = "ConsoleAppender";
            properties[keyOf(name) + ".target"] = "stderr";
        }
    }
}

/// Takes the conversion patterns out of `properties`, by appender: the stock configurator, which does not
/// know all of their specifiers, leaves such a layout at its default.
std::map<std::string, std::string> takePatterns(Properties& properties,
                                                const std::vector<std::string>& names) {
    std::map<std::string, std::string> patterns;
    for (const std::string& name : names) {
        const auto layout = properties.find(keyOf(name) + ".layout");
        if (layout == properties.end() || typeOf(layout->second) != "PatternLayout") {
            continue;
        }
        if (auto pattern = properties.extract(layout->first + ".ConversionPattern")) {
            patterns.emplace(name, pattern.mapped());
        }
    }
    return patterns;
}

void putInPatterns(const std::map<std::string, std::string>& patterns) {
    for (const auto& [name, pattern] : patterns) {
        log4cpp::Appender* appender = log4cpp::Appender::getAppender(name);
        if (appender->requiresLayout()) {
            appender->setLayout(std::make_unique<ColorPatternLayout>(pattern).release());
        }
    }
}

/// Takes back what a failed configuration has made. Knows the new appenders from older ones of the same name.
class AppenderRollback {
public:
    explicit AppenderRollback(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            previous.emplace(name, log4cpp::Appender::getAppender(name));
        }
    }

    void run() const {
        for (const auto& [name, before] : previous) {
            log4cpp::Appender* appender = log4cpp::Appender::getAppender(name);
            if (appender != nullptr && appender != before) {
                retire(*appender);
            }
        }
    }

private:
    // Closed, not deleted: the stock configurator keeps pointers to everything that it ever made.
    static void retire(log4cpp::Appender& appender) {
        const std::unique_ptr<std::vector<log4cpp::Category*>> categories(
            log4cpp::Category::getCurrentCategories());
        for (log4cpp::Category* category : *categories) {
            category->removeAppender(&appender);
        }
        appender.close();
    }

    std::map<std::string, log4cpp::Appender*> previous;
};

} // namespace

void configure(const std::string& initFileName, const std::map<std::string, std::string>& variables) {
    std::ifstream file(initFileName);
    if (!file) {
        throw log4cpp::ConfigureFailure("File " + initFileName + " does not exist");
    }
    Properties properties = loadProperties(file, variables);
    const std::vector<std::string> names = appenderNames(properties);
    translateStderrAppenders(properties, names);
    const auto patterns = takePatterns(properties, names);
    const AppenderRollback rollback(names);
    try {
        runStockConfigurator(properties);
        putInPatterns(patterns);
    } catch (...) {
        rollback.run();
        throw;
    }
}

} // namespace log4cpp_additions
