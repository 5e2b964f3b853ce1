#include "commons/run/profiling_record.h"

#include "commons/errors/format.h"
#include "commons/text/text_utils.h"

#include <nlohmann/json.hpp>

#include <array>
#include <ctime>
#include <filesystem>

namespace brask {

namespace {

using nlohmann::json;

/// Local time with milliseconds: "2024-02-29 23:59:59.007".
std::string timeText(ProfilingTime when) {
    const tm local = toLocalTime(when);
    std::array<char, 32> seconds{};
    strftime(seconds.data(), seconds.size(), "%Y-%m-%d %H:%M:%S", &local);
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch());
    return fmtlib::format("{}.{:03}", seconds.data(), sinceEpoch.count() % 1000);
}

json attributesObject(const std::map<ProfilingAttribute, std::string>& attributes) {
    json object = json::object();
    for (const auto& [attribute, value] : attributes) {
        object[profilingText(attribute)] = value;
    }
    return object;
}

std::string dump(const json& record) {
    return record.dump(-1, ' ', false, json::error_handler_t::strict);
}

} // namespace

std::string profilingStartRecord(const std::string& name, const std::string& guid,
                                 const std::map<ProfilingAttribute, std::string>& attributes,
                                 ProfilingTime when) {
    return dump({{"type", "operation"},
                 {"name", name},
                 {"guid", guid},
                 {"start", timeText(when)},
                 {"attributes", attributesObject(attributes)}});
}

std::string profilingFinishRecord(const std::string& guid,
                                  const std::map<ProfilingAttribute, std::string>& attributes,
                                  ProfilingTime when) {
    return dump({{"type", "operation"},
                 {"guid", guid},
                 {"finish", timeText(when)},
                 {"attributes", attributesObject(attributes)}});
}

std::string profilingMetricRecord(ProfilingMetricType metric, std::uint64_t speed, const std::string& path,
                                  std::uint64_t size, ProfilingTime when) {
    const bool ofArchive =
        metric == ProfilingMetricType::SpeedPack || metric == ProfilingMetricType::SpeedUnpack;
    const std::string subject = ofArchive ? "archive" : "file";
    return dump({{"type", "metric"},
                 {"name", profilingText(metric)},
                 {"value", speed},
                 {"time", timeText(when)},
                 {"attributes",
                  {{subject + ".path", path},
                   {subject + ".name", std::filesystem::path(path).filename().string()},
                   {subject + ".size", size}}}});
}

} // namespace brask
