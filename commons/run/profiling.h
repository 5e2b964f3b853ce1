#pragma once

// Profiling: what the component's processes did and when, in profile.log, one JSON object a line. A process
// opens a ProfilingContext at its start, and each piece of work is an object on the stack:
//
//     ProfilingContext profile(profileLogPath());
//     // The constructor writes the start record, the destructor the finish record.
//     ProfilingOperation operation(ProfilingOperationType::UnpackArchive, {}, &profile);
//
// Profiling never stops the work: the first record that can't be built or written is noted in the log and
// ends it for the process.

#include "commons/run/profiling_names.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace brask {

class SharedFile;

using ProfilingAttributes = std::map<ProfilingAttribute, std::string>;

/// The file "profile.log" beside the custom log that the environment variable CUSTOM_LOG names. An empty text
/// if that is not set.
std::string profileLogPath();

/// Where the records go; one per process.
class ProfilingContext {
public:
    /// Opens `path`, shared by all processes of the group "bsaadm". A file that can't be opened is noted in
    /// the log, and the records go nowhere then, as they do silently for an empty path. With the environment
    /// variable BMM_PROFILE_ASYNC_RUN at "1" this process leaves no operation records.
    explicit ProfilingContext(const std::string& path);

    ProfilingContext(const ProfilingContext&) = delete;
    ProfilingContext& operator=(const ProfilingContext&) = delete;
    ~ProfilingContext();

    /// The process's context, or null.
    static ProfilingContext* current();

    /// Appends `record` and a line feed to the file, if there is one. Raises what SharedFile::AppendLine
    /// raises.
    void write(const std::string& record);

    bool takesOperations() const { return !cancelled && !asyncRun; }

    bool takesMetrics() const { return !cancelled; }

    /// Runs a step of the profiling. A std::exception from it is noted in the log and ends the profiling for
    /// good.
    void attempt(const std::function<void()>& step);

private:
    bool cancelled = false;
    bool asyncRun = false;
    std::unique_ptr<SharedFile> file;
};

/// One piece of work: the constructor writes the start record, the destructor the finish record.
class ProfilingOperation {
public:
    /// `context` may be null, which means no records; otherwise it outlives the object.
    ProfilingOperation(ProfilingOperationType operation, const ProfilingAttributes& attributes,
                       ProfilingContext* context);

    ProfilingOperation(const ProfilingOperation&) = delete;
    ProfilingOperation& operator=(const ProfilingOperation&) = delete;
    virtual ~ProfilingOperation();

    virtual std::string name() const;

    /// What the next record tells. The start record empties it: the finish record tells what was learnt
    /// afterwards.
    ProfilingAttributes attributes;

protected:
    struct StartLater {};

    /// For a derived class that has more to set up: it calls writeStart() itself.
    ProfilingOperation(StartLater, ProfilingOperationType operation, ProfilingAttributes attributes,
                       ProfilingContext* context);

    void writeStart(const std::string& name);

private:
    ProfilingOperationType operation;
    ProfilingContext* context;
    std::string guid;
};

/// The run of a program.
class ProfilingCommand : public ProfilingOperation {
public:
    /// The name in the record is the file name of argv[0] and argv[1] as a shell would want it, the attribute
    /// "process.command_line" is the whole line, unfiltered. `addRuntime` adds "process.runtime.name".
    ProfilingCommand(int argc, char** argv, const ProfilingAttributes& attributes, ProfilingContext* context,
                     bool addRuntime);

    std::string name() const override { return commandName; }

private:
    std::string commandName;
};

/// A figure of speed: start(), the work, finish(). Both do nothing with a null context.
struct ProfilingMetric {
    ProfilingMetric(ProfilingMetricType metric, ProfilingContext* context)
        : metric(metric), context(context) {}

    void start();

    /// `size` is in bytes. Writes the record; its speed, in bytes a second, is 0 for less than 1 MiB and for
    /// less than a second, of which nothing can be said.
    void finish(const std::string& path, std::uint64_t size);

    ProfilingMetricType metric;
    ProfilingContext* context;
    std::chrono::steady_clock::time_point startTime;
    std::chrono::steady_clock::time_point finishTime;
    std::string path;
    std::uint64_t size = 0;
};

} // namespace brask
