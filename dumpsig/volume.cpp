#include "dumpsig/volume.h"

#include "backup_sign_lib/dump_signature.h"
#include "commons/errors/system_error.h"
#include "dumpsig/command_line.h"
#include "dumpsig/output.h"

#include <errno.h>
#include <unistd.h>

namespace dumpsig {

namespace {

struct stat statusOf(const Volume& volume) {
    struct stat status = {};
    const int result =
        volume.isStandardInput ? fstat(STDIN_FILENO, &status) : stat(volume.path.c_str(), &status);
    if (result != 0) {
        brask::throwSystemError(shownName(volume.path), errno);
    }
    return status;
}

Volume examine(const std::string& path) {
    Volume volume{.path = path, .size = {}, .isStandardInput = path == kStandardStream};
    const mode_t mode = statusOf(volume).st_mode;
    if (volume.isStandardInput || S_ISREG(mode) || S_ISDIR(mode)) {
        volume.size = InputFile(path).size();
    }
    return volume;
}

} // namespace

Volumes examineVolumes(const std::vector<std::string>& paths) {
    Volumes volumes;
    for (const std::string& path : paths) {
        volumes.push_back(examine(path));
    }
    return volumes;
}

std::optional<std::uint64_t> totalSize(const Volumes& volumes) {
    std::uint64_t total = 0;
    for (const Volume& volume : volumes) {
        if (!volume.size) {
            return std::nullopt;
        }
        total += *volume.size;
    }
    return total;
}

std::optional<Tail> peekAtTail(const Volumes& volumes) {
    const Volume& last = volumes.back();
    if (!last.size || last.isStandardInput) {
        return std::nullopt;
    }
    return InputFile(last.path).readTail(brask::kSignatureTailRange);
}

void refuseVolumeAsOutput(const Volumes& volumes, const struct stat& output) {
    for (const Volume& volume : volumes) {
        const struct stat input = statusOf(volume);
        if (S_ISREG(input.st_mode) && input.st_dev == output.st_dev && input.st_ino == output.st_ino) {
            BRASK_THROW(FileError, volume.path, "would be both read and written");
        }
    }
}

void refuseVolumeAsStandardOutput(const Volumes& volumes) {
    struct stat output = {};
    if (fstat(STDOUT_FILENO, &output) == 0) {
        refuseVolumeAsOutput(volumes, output);
    }
}

} // namespace dumpsig
