#include "log4cpp_additions/properties.h"

#include <log4cpp/PropertyConfigurator.hh>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace log4cpp_additions {

namespace {

constexpr const char* kBlanks = " \t\r";

std::string trim(const std::string& text) {
    const auto begin = text.find_first_not_of(kBlanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

std::string withoutPrefix(const std::string& key) {
    for (const std::string prefix : {"log4cpp.", "log4j."}) {
        if (key.starts_with(prefix)) {
            return key.substr(prefix.size());
        }
    }
    return key;
}

/// Resolves ${name} in values.
class Substitution {
public:
    Substitution(const std::map<std::string, std::string>& variables, const Properties& fileKeys)
        : variables(variables), fileKeys(fileKeys) {}

    std::string apply(const std::string& value) const {
        std::string result;
        std::size_t begin = 0;
        for (std::size_t open = 0; (open = value.find("${", begin)) != std::string::npos;) {
            const std::size_t close = value.find('}', open);
            if (close == std::string::npos) {
                break;
            }
            result.append(value, begin, open - begin);
            result += valueOf(value.substr(open + 2, close - open - 2));
            begin = close + 1;
        }
        return result.append(value, begin);
    }

private:
    std::string valueOf(const std::string& name) const {
        if (name == "${") { // "${${}" is the stock way to write "${"
            return name;
        }
        if (const auto variable = variables.find(name); variable != variables.end()) {
            return variable->second;
        }
        if (const auto key = fileKeys.find(name); key != fileKeys.end()) {
            return key->second;
        }
        const char* environment = getenv(name.c_str());
        return environment == nullptr ? "" : environment;
    }

    const std::map<std::string, std::string>& variables;
    const Properties& fileKeys;
};

/// Carries values round the property file's syntax: the file names an environment variable, which the stock
/// configurator puts in after it has looked for comments and blanks. The variables live as long as the
/// object.
class EnvironmentCarrier {
public:
    EnvironmentCarrier() = default;
    EnvironmentCarrier(const EnvironmentCarrier&) = delete;
    EnvironmentCarrier& operator=(const EnvironmentCarrier&) = delete;

    ~EnvironmentCarrier() {
        for (const std::string& name : names) {
            unsetenv(name.c_str());
        }
    }

    /// The text that stands for `value` in the file.
    std::string carry(const std::string& value) {
        std::string name;
        do {
            name = "LOG4CPP_ADDITIONS_" + std::to_string(nextNumber++);
        } while (getenv(name.c_str()) != nullptr);
        names.push_back(name);
        setenv(name.c_str(), value.c_str(), 1);
        return "${" + name + "}";
    }

private:
    std::vector<std::string> names;
    int nextNumber = 0;
};

bool fitsPropertyFile(const std::string& value) {
    return value == trim(value) && value.find_first_of("#\n") == std::string::npos &&
           value.find("${") == std::string::npos;
}

/// A file without a name that lives as long as the object, for readers that insist on a path.
class MemoryFile {
public:
    MemoryFile()
        : fd(memfd_create("log4cpp.properties", MFD_CLOEXEC)), path("/proc/self/fd/" + std::to_string(fd)) {
        if (fd == -1) {
            throw log4cpp::ConfigureFailure(std::string("Unable to make a memory file: ") +
                                            std::strerror(errno));
        }
    }

    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    ~MemoryFile() { ::close(fd); }

    void write(const std::string& content) const {
        if (!(std::ofstream(path, std::ios::binary) << content << std::flush)) {
            throw log4cpp::ConfigureFailure("Unable to write the memory file " + path);
        }
    }

    const int fd;
    const std::string path;
};

} // namespace

Properties loadProperties(std::istream& in, const std::map<std::string, std::string>& variables) {
    Properties properties;
    const Substitution substitution(variables, properties);
    for (std::string line; std::getline(in, line);) {
        line.erase(std::min(line.find('#'), line.size()));
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        properties.emplace(withoutPrefix(trim(line.substr(0, equals))),
                           substitution.apply(trim(line.substr(equals + 1))));
    }
    return properties;
}

void runStockConfigurator(const Properties& properties) {
    EnvironmentCarrier carrier;
    std::string text;
    for (const auto& [key, value] : properties) {
        text += "log4cpp." + key + "=" + (fitsPropertyFile(value) ? value : carrier.carry(value)) + "\n";
    }
    const MemoryFile file;
    file.write(text);
    log4cpp::PropertyConfigurator::configure(file.path);
}

} // namespace log4cpp_additions
