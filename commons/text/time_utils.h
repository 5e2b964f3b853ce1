#pragma once

// Points in time as local time.

#include <chrono>
#include <ctime>
#include <string>

namespace brask {

/// The local time at `when`, in whole seconds. Raises std::system_error.
tm toLocalTime(std::chrono::system_clock::time_point when);

/// The local time at `when` in the form "20240229T235959". Raises what toLocalTime raises.
std::string formatTimestamp(std::chrono::system_clock::time_point when);

} // namespace brask
