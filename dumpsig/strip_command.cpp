#include "backup_sign_lib/dump_signature.h"
#include "commons/errors/system_error.h"
#include "dumpsig/commands.h"
#include "dumpsig/document_facts.h"
#include "dumpsig/new_file.h"
#include "dumpsig/output.h"
#include "dumpsig/progress.h"
#include "dumpsig/scan.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace dumpsig {

namespace {

// Each way of stripping results in why the volume can't be stripped, empty when it was.

/// Passes a volume on without its document, or whole, if it turns out that nothing was signed.
std::string copyContent(const Volumes& volumes, const Sink& output, const ByteCounter& counter) {
    const std::optional<FoundDocument> document = scanDump(volumes, output, counter);
    std::string problem = problemOf(document);
    if (!problem.empty() && document) {
        output(document->text);
    }
    return problem;
}

std::string stripToStandardOutput(const CommandLine& call, const Volumes& volumes) {
    refuseVolumeAsStandardOutput(volumes);
    const Progress progress(call, volumes);
    return copyContent(volumes, writeToStandardOutput, progress.counter());
}

std::string stripToFile(const CommandLine& call, const Volumes& volumes) {
    struct stat place = {};
    if (stat(call.output.value().c_str(), &place) == 0) {
        refuseVolumeAsOutput(volumes, place);
    }
    const auto counter = std::make_shared<std::atomic<std::uint64_t>>();
    Attendant attendant(progressDisplay(call, volumes, counter));
    NewFile file(call.output.value(), call.force, attendant);
    const Sink write = [&](std::string_view bytes) { file.write(bytes); };
    std::string problem = copyContent(volumes, write, counter);
    if (problem.empty()) {
        file.commit();
    }
    return problem;
}

std::string stripToOutput(const CommandLine& call) {
    const Volumes volumes = examineVolumes(call.files);
    if (const std::optional<Tail> tail = peekAtTail(volumes)) {
        // What can be known beforehand keeps anything from being written.
        std::string problem = problemOf(findDocument(*tail));
        if (!problem.empty()) {
            return problem;
        }
    }
    return call.output == kStandardStream ? stripToStandardOutput(call, volumes) : stripToFile(call, volumes);
}

/// Opened so that neither a link leads elsewhere nor a pipe keeps us waiting.
InputFile openInPlace(const std::string& path) {
    Descriptor file(open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.get() == -1 && errno == ELOOP) {
        BRASK_THROW(FileError, path, "is a symbolic link, so it is not stripped in place");
    }
    if (file.get() == -1) {
        brask::throwSystemError(shownName(path), errno);
    }
    return {path, std::move(file)};
}

std::string stripInPlace(const std::string& path) {
    const InputFile file = openInPlace(path);
    if (!file.size()) {
        BRASK_THROW(FileError, path, "is no regular file");
    }
    const Tail tail = file.readTail(brask::kSignatureTailRange);
    const std::optional<FoundDocument> document = findDocument(tail);
    std::string problem = problemOf(document);
    if (!problem.empty()) {
        return problem;
    }
    if (file.size() != tail.end) {
        BRASK_THROW(FileError, path, "changed while it was read");
    }
    const int fd = file.descriptor();
    if (ftruncate(fd, static_cast<off_t>(document.value().offset)) != 0 || fsync(fd) != 0) {
        brask::throwSystemError(path, errno);
    }
    return {};
}

} // namespace

ExitCode stripCommand(const CommandLine& call) {
    const std::string& volume = call.files[0];
    const std::string problem = call.inPlace ? stripInPlace(volume) : stripToOutput(call);
    if (problem.empty()) {
        return kIntact;
    }
    complain(volume + ": " + problem);
    return kNotIntact;
}

} // namespace dumpsig
