#include "commons/run/profiling.h"

#include "commons/files/shared_file.h"
#include "commons/log/log_facade.h"
#include "commons/run/profiling_record.h"
#include "lib/process/lib/identity.h"
#include "lib/process/lib/shell_escape.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace brask {

namespace {

using std::chrono::system_clock;

ProfilingContext* currentContext = nullptr;

/// A random id in the form of a UUID. rand() is not seeded for it, so the ids of a program that does not seed
/// it either are the same in every run.
std::string makeGuid() {
    std::string guid = "xxxxxxxx-xxxx-4xxx-8xxx-xxxxxxxxxxxx";
    for (char& c : guid) {
        if (c == 'x') {
            c = "0123456789abcdef"[rand() & 0xf];
        }
    }
    return guid;
}

/// Bytes a second, or 0 where the measurement is too small to tell.
std::uint64_t speedOf(std::uint64_t size, std::chrono::steady_clock::duration elapsed) {
    constexpr std::uint64_t kLeastSize = 1048576;
    if (size < kLeastSize || elapsed < std::chrono::seconds(1)) {
        return 0;
    }
    return size * 1000 /
           static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

} // namespace

std::string profileLogPath() {
    const char* customLog = getenv("CUSTOM_LOG");
    return customLog == nullptr ? ""
                                : (std::filesystem::path(customLog).parent_path() / "profile.log").string();
}

ProfilingContext::ProfilingContext(const std::string& path) {
    const char* async = getenv("BMM_PROFILE_ASYNC_RUN");
    asyncRun = async != nullptr && std::string(async) == "1";
    if (!path.empty()) {
        try {
            file = std::make_unique<SharedFile>(path, static_cast<uid_t>(-1), groupId("bsaadm"), 0660);
        } catch (const std::exception& e) {
            logMessage(level::kVerbose, "Unable to open the log file '{}', cancel profile logging: {}", path,
                       e.what());
        }
    }
    currentContext = this;
}

ProfilingContext::~ProfilingContext() {
    currentContext = nullptr;
}

ProfilingContext* ProfilingContext::current() {
    return currentContext;
}

void ProfilingContext::write(const std::string& record) {
    if (file) {
        file->AppendLine(record);
    }
}

void ProfilingContext::attempt(const std::function<void()>& step) {
    try {
        step();
    } catch (const std::exception& e) {
        cancelled = true;
        logMessage(level::kVerbose, "Unable to write the profile info, cancel profile logging: {}", e.what());
    }
}

ProfilingOperation::ProfilingOperation(ProfilingOperationType operation,
                                       const ProfilingAttributes& attributes, ProfilingContext* context)
    : ProfilingOperation(StartLater{}, operation, attributes, context) {
    writeStart(ProfilingOperation::name());
}

ProfilingOperation::ProfilingOperation(StartLater /*tag*/, ProfilingOperationType operation,
                                       ProfilingAttributes attributes, ProfilingContext* context)
    : attributes(std::move(attributes)), operation(operation), context(context), guid(makeGuid()) {}

ProfilingOperation::~ProfilingOperation() {
    if (context == nullptr || !context->takesOperations()) {
        return;
    }
    try {
        context->attempt(
            [this] { context->write(profilingFinishRecord(guid, attributes, system_clock::now())); });
    } catch (const std::exception&) { // Not even the log can be told, for want of memory, say.
    }
}

std::string ProfilingOperation::name() const {
    return profilingText(operation);
}

void ProfilingOperation::writeStart(const std::string& name) {
    if (context != nullptr && context->takesOperations()) {
        context->attempt([&] {
            context->write(profilingStartRecord(name, guid, attributes, system_clock::now()));
            attributes.clear();
        });
    }
}

ProfilingCommand::ProfilingCommand(int argc, char** argv, const ProfilingAttributes& attributes,
                                   ProfilingContext* context, bool addRuntime)
    : ProfilingOperation(StartLater{}, ProfilingOperationType::RestoreRunCommand, attributes, context) {
    std::string commandLine;
    if (argc >= 1) {
        commandName = std::filesystem::path(argv[0]).filename().string();
        commandLine = escapeForShell(argv[0]);
    }
    for (int i = 1; i < argc; ++i) {
        const std::string argument = " " + escapeForShell(argv[i]);
        if (i == 1) {
            commandName += argument;
        }
        commandLine += argument;
    }
    this->attributes[ProfilingAttribute::ProcessCommandLine] = commandLine;
    if (addRuntime) {
        // Fixed, whatever builds the program: readers of the file tell the component's programs by it.
        this->attributes[ProfilingAttribute::ProcessRuntimeName] = "GNU C++";
    }
    writeStart(ProfilingCommand::name());
}

void ProfilingMetric::start() {
    if (context != nullptr) {
        startTime = std::chrono::steady_clock::now();
    }
}

void ProfilingMetric::finish(const std::string& path, std::uint64_t size) {
    if (context == nullptr) {
        return;
    }
    this->path = path;
    this->size = size;
    finishTime = std::chrono::steady_clock::now();
    if (context->takesMetrics()) {
        context->attempt([this] {
            context->write(profilingMetricRecord(metric, speedOf(this->size, finishTime - startTime),
                                                 this->path, this->size, system_clock::now()));
        });
    }
}

} // namespace brask
