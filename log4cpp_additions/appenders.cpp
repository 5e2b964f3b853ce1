#include "log4cpp_additions/appenders.h"

#include "log4cpp_additions/held_file.h"
#include "log4cpp_additions/pattern.h"

#include <log4cpp/AbortAppender.hh>
#include <log4cpp/BasicLayout.hh>
#include <log4cpp/Configurator.hh>
#include <log4cpp/DailyRollingFileAppender.hh>
#include <log4cpp/FileAppender.hh>
#include <log4cpp/OstreamAppender.hh>
#include <log4cpp/RemoteSyslogAppender.hh>
#include <log4cpp/RollingFileAppender.hh>
#include <log4cpp/SimpleLayout.hh>
#include <log4cpp/SyslogAppender.hh>

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include <sys/stat.h>

namespace log4cpp_additions {

namespace {

using log4cpp::ConfigureFailure;
using AppenderPtr = std::unique_ptr<log4cpp::Appender>;
using LayoutPtr = std::unique_ptr<log4cpp::Layout>;

constexpr mode_t kFileMode = 0640;

std::string fileNameOf(const AppenderProperties& properties) {
    return properties.text(".fileName", "foobar"); // log4cpp's own default
}

AppenderPtr makeConsoleAppender(const AppenderProperties& properties, const OpenLog& /*openLog*/) {
    const std::string target = properties.text(".target", "stdout");
    if (target != "stdout" && target != "stderr") {
        throw ConfigureFailure("Appender '" + properties.name + "' has invalid target '" + target + "'");
    }
    return std::make_unique<log4cpp::OstreamAppender>(properties.name,
                                                      target == "stdout" ? &std::cout : &std::cerr);
}

AppenderPtr makeStderrAppender(const AppenderProperties& properties, const OpenLog& /*openLog*/) {
    return std::make_unique<log4cpp::OstreamAppender>(properties.name, &std::cerr);
}

AppenderPtr makeFileAppender(const AppenderProperties& properties, const OpenLog& openLog) {
    const bool append = properties.flag(".append", true);
    if (writesTo(openLog, properties)) {
        return std::make_unique<log4cpp::FileAppender>(properties.name, takeFile(openLog, append));
    }
    return std::make_unique<log4cpp::FileAppender>(properties.name, fileNameOf(properties), append,
                                                   kFileMode);
}

AppenderPtr makeRollingFileAppender(const AppenderProperties& properties, const OpenLog& openLog) {
    const bool append = properties.flag(".append", true);
    const auto maxFileSize = static_cast<std::size_t>(properties.number(".maxFileSize", 10 * 1024 * 1024));
    const auto maxBackupIndex = static_cast<unsigned int>(properties.number(".maxBackupIndex", 1));
    if (writesTo(openLog, properties)) {
        return std::make_unique<HeldRollingFileAppender>(
            properties.name, openLog.fileName, takeFile(openLog, append), maxFileSize, maxBackupIndex);
    }
    return std::make_unique<log4cpp::RollingFileAppender>(properties.name, fileNameOf(properties),
                                                          maxFileSize, maxBackupIndex, append, kFileMode);
}

AppenderPtr makeDailyRollingFileAppender(const AppenderProperties& properties, const OpenLog& /*openLog*/) {
    using log4cpp::DailyRollingFileAppender;
    const int kept =
        properties.number(".maxDaysKeep", static_cast<int>(DailyRollingFileAppender::maxDaysToKeepDefault));
    return std::make_unique<DailyRollingFileAppender>(properties.name, fileNameOf(properties),
                                                      static_cast<unsigned int>(kept),
                                                      properties.flag(".append", true), kFileMode);
}

/// The facility as the system knows it: the file counts them, the system has them three bits higher.
int facilityOf(const AppenderProperties& properties) {
    return properties.number(".facility", -1) * 8;
}

AppenderPtr makeRemoteSyslogAppender(const AppenderProperties& properties, const OpenLog& /*openLog*/) {
    return std::make_unique<log4cpp::RemoteSyslogAppender>(
        properties.name, properties.text(".syslogName", "syslog"),
        properties.text(".syslogHost", "localhost"), facilityOf(properties),
        properties.number(".portNumber", -1));
}

AppenderPtr makeLocalSyslogAppender(const AppenderProperties& properties, const OpenLog& /*openLog*/) {
    return std::make_unique<log4cpp::SyslogAppender>(
        properties.name, properties.text(".syslogName", "syslog"), facilityOf(properties));
}

AppenderPtr makeAbortAppender(const AppenderProperties& properties, const OpenLog& /*openLog*/) {
    return std::make_unique<log4cpp::AbortAppender>(properties.name);
}

constexpr struct {
    const char* type;
    AppenderPtr (*make)(const AppenderProperties& properties, const OpenLog& openLog);
} kAppenderTypes[] = {
    {"ConsoleAppender", makeConsoleAppender},
    {"StderrAppender", makeStderrAppender},
    {"FileAppender", makeFileAppender},
    {"RollingFileAppender", makeRollingFileAppender},
    {"DailyRollingFileAppender", makeDailyRollingFileAppender},
    {"SyslogAppender", makeRemoteSyslogAppender},
    {"LocalSyslogAppender", makeLocalSyslogAppender},
    {"AbortAppender", makeAbortAppender},
};

AppenderPtr makeOfType(const AppenderProperties& properties, const OpenLog& openLog) {
    const std::string type = properties.type("");
    for (const auto& row : kAppenderTypes) {
        if (type == row.type) {
            return row.make(properties, openLog);
        }
    }
    throw ConfigureFailure("Appender '" + properties.name + "' has unknown type '" + type + "'");
}

LayoutPtr makePatternLayout(const AppenderProperties& properties) {
    constexpr const char* kPattern = ".layout.ConversionPattern";
    if (!properties.has(kPattern)) {
        return std::make_unique<log4cpp::PatternLayout>();
    }
    return std::make_unique<ColorPatternLayout>(properties.text(kPattern, ""));
}

LayoutPtr makeLayout(const AppenderProperties& properties) {
    if (!properties.has(".layout")) {
        throw ConfigureFailure("Missing layout property for appender '" + properties.name + "'");
    }
    const std::string type = properties.type(".layout");
    if (type == "BasicLayout") {
        return std::make_unique<log4cpp::BasicLayout>();
    }
    if (type == "SimpleLayout") {
        return std::make_unique<log4cpp::SimpleLayout>();
    }
    if (type == "PatternLayout") {
        return makePatternLayout(properties);
    }
    throw ConfigureFailure("Unknown layout type '" + type + "' for appender '" + properties.name + "'");
}

void setThreshold(log4cpp::Appender& appender, const AppenderProperties& properties) {
    const std::string threshold = properties.text(".threshold", "");
    try {
        if (!threshold.empty()) {
            appender.setThreshold(log4cpp::Priority::getPriorityValue(threshold));
        }
    } catch (const std::invalid_argument& e) {
        throw ConfigureFailure(std::string(e.what()) + " for threshold of appender '" + properties.name +
                               "'");
    }
}

} // namespace

std::string AppenderProperties::text(const std::string& key, const std::string& fallback) const {
    const auto found = properties.find(prefix + key);
    return found == properties.end() ? fallback : found->second;
}

int AppenderProperties::number(const std::string& key, int fallback) const {
    return has(key) ? static_cast<int>(std::strtol(text(key, "").c_str(), nullptr, 10)) : fallback;
}

bool AppenderProperties::flag(const std::string& key, bool fallback) const {
    return has(key) ? text(key, "") == "true" : fallback;
}

std::string AppenderProperties::type(const std::string& key) const {
    const std::string value = text(key, "");
    return value.substr(value.rfind('.') + 1);
}

bool writesTo(const OpenLog& openLog, const AppenderProperties& properties) {
    const std::string fileName = properties.text(".fileName", "");
    if (openLog.fileName.empty() || fileName.empty()) {
        return false;
    }
    struct stat named = {};
    struct stat held = {};
    return fileName == openLog.fileName ||
           (stat(fileName.c_str(), &named) == 0 && fstat(openLog.descriptor, &held) == 0 &&
            named.st_dev == held.st_dev && named.st_ino == held.st_ino);
}

AppenderPtr makeAppender(const AppenderProperties& properties, const OpenLog& openLog) {
    AppenderPtr appender = makeOfType(properties, openLog);
    if (appender->requiresLayout()) {
        appender->setLayout(makeLayout(properties).release());
    }
    setThreshold(*appender, properties);
    return appender;
}

} // namespace log4cpp_additions
