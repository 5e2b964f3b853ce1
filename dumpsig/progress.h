#pragma once

#include "dumpsig/attendant.h"
#include "dumpsig/command_line.h"
#include "dumpsig/scan.h"

#include <optional>
#include <string>

namespace dumpsig {

/// How far a run is: "1.5 GiB of 3.0 GiB, 50%, 1.2 GiB/s, 0:01 left", or without the total what is known.
std::string progressLine(std::uint64_t done, std::optional<std::uint64_t> total, double seconds);

/// Shows how `counter` approaches the size of the volumes in one line on standard error, if the call says so
/// or, when it says nothing, if that is a terminal.
Attendant::Display progressDisplay(const CommandLine& call, const Volumes& volumes,
                                   const ByteCounter& counter);

/// The counter of a run, displayed while it lives.
class Progress final {
public:
    Progress(const CommandLine& call, const Volumes& volumes);

    const ByteCounter& counter() const { return bytes; }

private:
    ByteCounter bytes = std::make_shared<std::atomic<std::uint64_t>>();
    /// Only with a display: without one, a signal's own action is all it takes.
    std::optional<Attendant> attendant;
};

} // namespace dumpsig
