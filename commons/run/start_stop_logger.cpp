#include "commons/run/start_stop_logger.h"

#include "commons/log/log_facade.h"
#include "lib/process/lib/ExecCmd.h"

#include <unistd.h>

namespace brask {

namespace {

std::string commandLine(int argc, char** argv) {
    CmdLine line;
    for (int i = 0; i < argc; ++i) {
        line.addArg(argv[i]);
    }
    return line.toString();
}

} // namespace

StartStopLogger::StartStopLogger(const std::string& name, int argc, char** argv) : name(name), pid(getpid()) {
    logNote("{} started : {}", name, commandLine(argc, argv));
    daemonHooks().emplace_back([this] { OnDaemonized(); });
}

StartStopLogger::~StartStopLogger() {
    if (exitCode == -1) {
        logMessage(level::kVerbose, "{} finished.  (exit code is not reported)", name);
    } else {
        logMessage(level::kVerbose, "{} finished. Exit code: {}", name, exitCode);
    }
}

void StartStopLogger::OnDaemonized() {
    const int newPid = getpid();
    logNote("{} {} -> ({} daemon)", name, pid, newPid);
    pid = newPid;
}

std::vector<std::function<void()>>& daemonHooks() {
    static std::vector<std::function<void()>> hooks;
    return hooks;
}

} // namespace brask
