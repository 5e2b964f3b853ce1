#include "commons/errors/error.h"
#include "dumpsig/commands.h"
#include "dumpsig/document_facts.h"
#include "dumpsig/output.h"
#include "dumpsig/report.h"
#include "dumpsig/scan.h"

#include <exception>

namespace dumpsig {

namespace {

std::optional<FoundDocument> locateDocument(const std::string& path) {
    const Volumes volumes = examineVolumes({path});
    if (const std::optional<Tail> tail = peekAtTail(volumes)) {
        return findDocument(*tail);
    }
    return scanDump(
        volumes, [](std::string_view) {}, std::make_shared<std::atomic<std::uint64_t>>());
}

struct Answer {
    ExitCode exitCode = kIntact;
    DocumentFacts facts;
    std::string error;
};

Answer readDocument(const std::optional<FoundDocument>& document) {
    if (!document) {
        return {.exitCode = kNotIntact, .facts = {}, .error = kNotSigned};
    }
    try {
        return {.exitCode = kIntact, .facts = readFacts(*document), .error = {}};
    } catch (const brask::IExTraceable& e) {
        return {.exitCode = kNotIntact, .facts = {}, .error = e.GetText()};
    }
}

} // namespace

ExitCode infoCommand(const CommandLine& call) {
    const std::string& volume = call.files.back();
    Answer answer;
    try {
        answer = readDocument(locateDocument(volume));
    } catch (const std::exception& e) {
        answer = {.exitCode = kUnknown, .facts = {}, .error = e.what()};
    }
    if (answer.exitCode == kUnknown) {
        complain(answer.error);
    } else if (answer.exitCode == kNotIntact && !call.json) {
        complain(volume + ": " + answer.error);
    }
    writeToStandardOutput(call.json ? factsJson(answer.facts, answer.error) : factsText(answer.facts));
    return answer.exitCode;
}

} // namespace dumpsig
