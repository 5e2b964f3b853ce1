#pragma once

// The records of profile.log as compact JSON texts, without the line feed. Each raises nlohmann's exceptions
// for text that is not UTF-8, and std::system_error for a time without local form.

#include "commons/run/profiling_names.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace brask {

using ProfilingTime = std::chrono::system_clock::time_point;

std::string profilingStartRecord(const std::string& name, const std::string& guid,
                                 const std::map<ProfilingAttribute, std::string>& attributes,
                                 ProfilingTime when);

/// Has no name: a reader finds the start by the guid.
std::string profilingFinishRecord(const std::string& guid,
                                  const std::map<ProfilingAttribute, std::string>& attributes,
                                  ProfilingTime when);

/// `speed` is in bytes a second, `size` in bytes.
std::string profilingMetricRecord(ProfilingMetricType metric, std::uint64_t speed, const std::string& path,
                                  std::uint64_t size, ProfilingTime when);

} // namespace brask
