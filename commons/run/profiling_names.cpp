#include "commons/run/profiling_names.h"

#include <nlohmann/json.hpp>

namespace brask {

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

} // namespace brask
