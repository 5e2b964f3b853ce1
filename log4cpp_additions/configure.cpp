#include "log4cpp_additions/configure.h"

#include "log4cpp_additions/appenders.h"
#include "log4cpp_additions/properties.h"

#include <log4cpp/Category.hh>
#include <log4cpp/Configurator.hh>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace log4cpp_additions {

namespace {

using log4cpp::ConfigureFailure;
using log4cpp::Priority;

constexpr const char* kRootCategory = "rootCategory";

using Appenders = std::map<std::string, std::unique_ptr<log4cpp::Appender>>;

/// The properties below `prefix`, without it.
Properties below(const std::string& prefix, const Properties& properties) {
    Properties result;
    for (auto i = properties.lower_bound(prefix); i != properties.end() && i->first.starts_with(prefix);
         ++i) {
        result.emplace_hint(result.end(), i->first.substr(prefix.size()), i->second);
    }
    return result;
}

/// The appenders that the file defines.
std::vector<AppenderProperties> definedAppenders(const Properties& properties) {
    std::vector<AppenderProperties> appenders;
    const Properties definitions = below("appender.", properties);
    for (const auto& [key, type] : definitions) {
        const std::string name = key.substr(0, key.find('.'));
        if (name == key) {
            appenders.emplace_back(name, properties);
        } else if (!definitions.contains(name)) {
            throw ConfigureFailure("partial appender definition : appender." + key);
        }
    }
    return appenders;
}

/// A category as the file has it, with nothing done about it so far.
struct CategorySettings {
    std::string name;
    Priority::Value priority = Priority::NOTSET;
    bool additive = true;
    std::vector<log4cpp::Appender*> appenders;

    bool isRoot() const { return name == kRootCategory; }

    void apply() const {
        log4cpp::Category& category =
            isRoot() ? log4cpp::Category::getRoot() : log4cpp::Category::getInstance(name);
        category.setPriority(priority);
        category.setAdditivity(additive);
        category.removeAllAppenders();
        for (log4cpp::Appender* appender : appenders) {
            category.addAppender(*appender); // by reference: categories share appenders
        }
    }
};

Priority::Value priorityOf(const std::string& word, const CategorySettings& category) {
    try {
        const Priority::Value priority = word.empty() ? Priority::NOTSET : Priority::getPriorityValue(word);
        if (category.isRoot() && priority >= Priority::NOTSET) {
            throw std::invalid_argument("cannot set priority NOTSET on Root Category");
        }
        return priority;
    } catch (const std::invalid_argument& e) {
        throw ConfigureFailure(std::string(e.what()) + " for category '" + category.name + "'");
    }
}

log4cpp::Appender* findAppender(const std::string& name, const CategorySettings& category,
                                const Appenders& appenders) {
    const auto found = appenders.find(name);
    if (found == appenders.end()) {
        throw ConfigureFailure("Appender '" + name + "' not found for category '" + category.name + "'");
    }
    return found->second.get();
}

/// `value` is a priority and the names of appenders, with commas between them.
CategorySettings readCategory(const std::string& name, const std::string& value, const Properties& properties,
                              const Appenders& appenders) {
    CategorySettings category;
    category.name = name;
    const auto additivity = properties.find("additivity." + name);
    category.additive = additivity == properties.end() || additivity->second == "true";
    std::istringstream words(value + ",");
    std::string word;
    std::getline(words, word, ',');
    category.priority = priorityOf(trim(word), category);
    while (std::getline(words, word, ',')) {
        category.appenders.push_back(findAppender(trim(word), category, appenders));
    }
    return category;
}

std::vector<CategorySettings> readCategories(const Properties& properties, const Appenders& appenders) {
    const auto root = properties.find(kRootCategory);
    if (root == properties.end()) {
        throw ConfigureFailure(std::string("Unable to find category: ") + kRootCategory);
    }
    std::vector<CategorySettings> categories{
        readCategory(kRootCategory, root->second, properties, appenders)};
    for (const auto& [name, value] : below("category.", properties)) {
        categories.push_back(readCategory(name, value, properties, appenders));
    }
    return categories;
}

/// Appenders are in use until the process ends: categories hold no more than references.
void keep(Appenders appenders) {
    static std::vector<Appenders> inUse;
    inUse.push_back(std::move(appenders));
}

} // namespace

bool configure(const std::string& initFileName, const std::map<std::string, std::string>& variables,
               const OpenLog& openLog) {
    std::ifstream file(initFileName);
    if (!file) {
        throw ConfigureFailure("File " + initFileName + " does not exist");
    }
    const Properties properties = loadProperties(file, variables);
    Appenders appenders;
    bool usesOpenLog = false;
    for (const AppenderProperties& definition : definedAppenders(properties)) {
        appenders[definition.name] = makeAppender(definition, openLog);
        usesOpenLog = usesOpenLog || writesTo(openLog, definition);
    }
    for (const CategorySettings& category : readCategories(properties, appenders)) {
        category.apply();
    }
    keep(std::move(appenders));
    return usesOpenLog;
}

} // namespace log4cpp_additions
