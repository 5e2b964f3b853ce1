#include "commons/text/time_utils.h"

#include <array>
#include <cerrno>
#include <system_error>

namespace brask {

tm toLocalTime(std::chrono::system_clock::time_point when) {
    const time_t seconds = std::chrono::system_clock::to_time_t(when);
    tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "Failed to convert time");
    }
    return local;
}

std::string formatTimestamp(std::chrono::system_clock::time_point when) {
    const tm local = toLocalTime(when);
    std::array<char, 80> buffer{};
    return {buffer.data(), std::strftime(buffer.data(), buffer.size(), "%Y%m%dT%H%M%S", &local)};
}

} // namespace brask
