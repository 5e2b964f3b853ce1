#include "commons/text/time_utils.h"

#include "commons/errors/system_error.h"

#include <array>

namespace brask {

tm toLocalTime(std::chrono::system_clock::time_point when) {
    const time_t seconds = std::chrono::system_clock::to_time_t(when);
    tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        throwErrno("Failed to convert time");
    }
    return local;
}

std::string formatTimestamp(std::chrono::system_clock::time_point when) {
    const tm local = toLocalTime(when);
    std::array<char, 80> buffer{};
    return {buffer.data(), std::strftime(buffer.data(), buffer.size(), "%Y%m%dT%H%M%S", &local)};
}

} // namespace brask
