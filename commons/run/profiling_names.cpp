#include "commons/run/profiling_names.h"

#include <nlohmann/json.hpp>

#include <array>
#include <map>
#include <utility>

namespace brask {

namespace {

// Indexed by the id; 0 is for every id that has no name.
constexpr std::array<const char*, 28> kDisplayNames{
    "Unspecified",
    "Main",
    "Execute command",
    "Restore server",
    "Restore hosting plan",
    "Restore reseller plan",
    "Restore custom plan item",
    "Restore reseller",
    "Restore customer",
    "Restore domain",
    "Restore domain alias",
    "Restore subdomain",
    "Restore hosting",
    "Restore hosting content",
    "Restore web user",
    "Restore FTP user",
    "Restore SSL certificate",
    "Restore protected directory",
    "Restore user account",
    "Restore database",
    "Restore database user",
    "Restore DNS zone",
    "Restore mailname",
    "Restore mailboxes content",
    "Restore maillist",
    "Restore maillists content",
    "Restore autoresponder",
    "Unpack CID",
};

} // namespace

#define OPERATION(name, text) {ProfilingOperationType::name, text},
#define ATTRIBUTE(name, text) {ProfilingAttribute::name, text},
#define METRIC(name, text) {ProfilingMetricType::name, text},

NLOHMANN_JSON_SERIALIZE_ENUM(ProfilingOperationType, {BRASK_PROFILING_OPERATIONS(OPERATION)})
NLOHMANN_JSON_SERIALIZE_ENUM(ProfilingAttribute, {BRASK_PROFILING_ATTRIBUTES(ATTRIBUTE)})
NLOHMANN_JSON_SERIALIZE_ENUM(ProfilingMetricType, {BRASK_PROFILING_METRICS(METRIC)})

std::string profilingText(ProfilingOperationType operation) {
    return nlohmann::json(operation).get<std::string>();
}

std::string profilingText(ProfilingAttribute attribute) {
    return nlohmann::json(attribute).get<std::string>();
}

std::string profilingText(ProfilingMetricType metric) {
    return nlohmann::json(metric).get<std::string>();
}

std::string objectDisplayName(int id) {
    const bool known = id > 0 && std::cmp_less(id, kDisplayNames.size());
    return kDisplayNames.at(known ? static_cast<std::size_t>(id) : 0);
}

std::string objectTypeDisplayName(const std::string& type) {
    static const std::map<std::string, int> ids{
        {"Server", 3},    {"Reseller", 7},       {"Customer", 8},       {"Domain", 9},    {"Subscription", 9},
        {"Database", 19}, {"Database user", 20}, {"Email account", 22}, {"Mail list", 24}};
    const auto id = ids.find(type);
    return id == ids.end() ? type : objectDisplayName(id->second);
}

} // namespace brask
