#include "dumpsig/commands.h"
#include "dumpsig/output.h"
#include "dumpsig/progress.h"
#include "dumpsig/report.h"

#include <chrono>
#include <cmath>
#include <exception>

namespace dumpsig {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    return std::round(Milliseconds(Clock::now() - begin).count()) / 1000;
}

Verdict judge(const CommandLine& call, const std::vector<PublicKey>& keys) {
    const Volumes volumes = examineVolumes(call.files);
    const Progress progress(call, volumes);
    return judgeDump(
        volumes, keys, [](std::string_view) {}, progress.counter());
}

ExitCode exitCodeOf(const Verdict& verdict) {
    switch (verdict.judgement) {
    case Judgement::kIntact:
        return kIntact;
    case Judgement::kUnknown:
        return kUnknown;
    default:
        return kNotIntact;
    }
}

} // namespace

ExitCode verifyCommand(const CommandLine& call) {
    const auto begin = Clock::now();
    std::vector<PublicKey> keys;
    Verdict verdict;
    std::string error;
    try {
        // All keys before any volume.
        keys = readKeys(call.keys);
        verdict = judge(call, keys);
    } catch (const std::exception& e) {
        error = e.what();
        complain(error);
    }
    if (call.json) {
        writeToStandardOutput(verdictJson(verdict, call.files, secondsSince(begin), error));
    } else if (!call.quiet && error.empty()) {
        writeToStandardOutput(verdictText(verdict));
    }
    return exitCodeOf(verdict);
}

} // namespace dumpsig
