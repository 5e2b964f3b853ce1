#include "dumpsig/progress.h"

#include "commons/errors/format.h"
#include "commons/errors/system_error.h"
#include "dumpsig/output.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

#include <unistd.h>

namespace dumpsig {

namespace {

using Clock = std::chrono::steady_clock;

/// What a terminal takes for "erase to the end of the line".
constexpr const char* kEraseToEnd = "\x1b[K";

std::string bytesText(double bytes) {
    constexpr std::array kUnits{"B", "KiB", "MiB", "GiB", "TiB", "PiB"};
    std::size_t unit = 0;
    while (bytes >= 1023.95 && unit + 1 < kUnits.size()) {
        bytes /= 1024;
        ++unit;
    }
    return brask::fmtlib::format("{:.{}f} {}", bytes, unit == 0 ? 0 : 1, kUnits[unit]);
}

std::string durationText(double seconds) {
    const auto whole = static_cast<std::uint64_t>(seconds);
    if (whole < 3600) {
        return brask::fmtlib::format("{}:{:02}", whole / 60, whole % 60);
    }
    return brask::fmtlib::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

void writeLine(const std::string& line) {
    try {
        writeAll(STDERR_FILENO, line, "standard error");
    } catch (const brask::SystemError&) {
        // The work does not depend on whether anybody watches it.
    }
}

} // namespace

std::string progressLine(std::uint64_t done, std::optional<std::uint64_t> total, double seconds) {
    const double rate = static_cast<double>(done) / std::max(seconds, 0.001);
    const std::string rateText = bytesText(rate) + "/s";
    if (!total || *total == 0) {
        return bytesText(static_cast<double>(done)) + ", " + rateText;
    }
    // A file that grows while it is read has more than all.
    const std::uint64_t shown = std::min(done, *total);
    const double share = static_cast<double>(shown) / static_cast<double>(*total);
    std::string line =
        brask::fmtlib::format("{} of {}, {:.0f}%, {}", bytesText(static_cast<double>(shown)),
                              bytesText(static_cast<double>(*total)), std::floor(share * 100), rateText);
    if (rate > 0) {
        line += ", " + durationText(std::ceil(static_cast<double>(*total - shown) / rate)) + " left";
    }
    return line;
}

Attendant::Display progressDisplay(const CommandLine& call, const Volumes& volumes,
                                   const ByteCounter& counter) {
    if (call.quiet || !call.progress.value_or(isatty(STDERR_FILENO) == 1)) {
        return {};
    }
    const auto draw = [counter, total = totalSize(volumes), begin = Clock::now()] {
        const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        writeLine("\r" + progressLine(*counter, total, seconds) + kEraseToEnd);
    };
    return {.draw = draw, .erase = [] { writeLine(std::string("\r") + kEraseToEnd); }};
}

Progress::Progress(const CommandLine& call, const Volumes& volumes) {
    if (Attendant::Display display = progressDisplay(call, volumes, bytes); display.draw) {
        attendant.emplace(std::move(display));
    }
}

} // namespace dumpsig
