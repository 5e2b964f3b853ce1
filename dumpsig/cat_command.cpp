#include "dumpsig/commands.h"
#include "dumpsig/output.h"
#include "dumpsig/progress.h"
#include "dumpsig/verdict.h"

namespace dumpsig {

namespace {

/// What a consumer of a bad dump misses, so that it fails as well.
constexpr std::size_t kHeldBack = 64 * 1024;

} // namespace

ExitCode catCommand(const CommandLine& call) {
    const std::vector<PublicKey> keys = readKeys(call.keys);
    const Volumes volumes = examineVolumes(call.files);
    refuseVolumeAsStandardOutput(volumes);
    std::optional<Progress> progress(std::in_place, call, volumes);
    Window end(kHeldBack, writeToStandardOutput);
    const Sink hold = [&](std::string_view bytes) { end.push(bytes); };
    const Verdict verdict = judgeDump(volumes, keys, hold, progress->counter());
    if (verdict.judgement == Judgement::kIntact) {
        end.release(end.held().size());
        return kIntact;
    }
    progress.reset(); // the line that it has drawn goes before another is written
    complain(verdict.text);
    return kNotIntact;
}

} // namespace dumpsig
