#include "log4cpp_additions/properties.h"

#include <log4cpp/Configurator.hh>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <utility>

namespace log4cpp_additions {

namespace {

constexpr const char* kBlanks = " \t\r";
constexpr std::size_t kLongestValue = 1048576;

std::string withoutPrefix(const std::string& key) {
    for (const std::string prefix : {"log4cpp.", "log4j."}) {
        if (key.starts_with(prefix)) {
            return key.substr(prefix.size());
        }
    }
    return key;
}

/// The file as it is, before any substitution.
Properties readLines(std::istream& in) {
    Properties properties;
    for (std::string line; std::getline(in, line);) {
        line.erase(std::min(line.find('#'), line.size()));
        if (const std::size_t equals = line.find('='); equals != std::string::npos) {
            properties.emplace(withoutPrefix(trim(line.substr(0, equals))), trim(line.substr(equals + 1)));
        }
    }
    return properties;
}

/// Resolves ${name} in values.
class Substitution {
public:
    Substitution(const std::map<std::string, std::string>& variables, const Properties& raw)
        : variables(variables), raw(raw) {}

    Properties run() {
        for (const auto& [key, value] : raw) {
            resolve(key);
        }
        return std::move(resolved);
    }

private:
    const std::string& resolve(const std::string& key) {
        if (const auto known = resolved.find(key); known != resolved.end()) {
            return known->second;
        }
        inWork.insert(key);
        std::string value = apply(raw.at(key));
        inWork.erase(key);
        return resolved.emplace(key, std::move(value)).first->second;
    }

    std::string apply(const std::string& value) {
        std::string result;
        std::size_t begin = 0;
        for (std::size_t open = 0; (open = value.find("${", begin)) != std::string::npos;) {
            const std::size_t close = value.find('}', open);
            if (close == std::string::npos) {
                break;
            }
            result.append(value, begin, open - begin);
            result += valueOf(value.substr(open + 2, close - open - 2));
            if (result.size() > kLongestValue) {
                throw log4cpp::ConfigureFailure("Value too long: " + value);
            }
            begin = close + 1;
        }
        return result.append(value, begin);
    }

    std::string valueOf(const std::string& name) {
        if (name == "${") { // "${${}" is the stock way to write "${"
            return name;
        }
        if (const auto variable = variables.find(name); variable != variables.end()) {
            return variable->second;
        }
        if (raw.contains(name) && !inWork.contains(name)) {
            return resolve(name);
        }
        const char* environment = getenv(name.c_str());
        return environment == nullptr ? "" : environment;
    }

    const std::map<std::string, std::string>& variables;
    const Properties& raw;
    Properties resolved;
    std::set<std::string> inWork;
};

} // namespace

std::string trim(const std::string& text) {
    const auto begin = text.find_first_not_of(kBlanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

Properties loadProperties(std::istream& in, const std::map<std::string, std::string>& variables) {
    const Properties raw = readLines(in);
    return Substitution(variables, raw).run();
}

} // namespace log4cpp_additions
