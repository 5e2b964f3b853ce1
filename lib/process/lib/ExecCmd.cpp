#include "lib/process/lib/ExecCmd.h"

#include "lib/process/lib/spawn.h"

#include <boost/format.hpp>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace brask {

namespace {

/// A labelled value that ends in one line feed, or nothing for an empty value.
std::string block(const char* label, const std::string& value) {
    const char* const end = value.ends_with('\n') ? "" : "\n";
    return value.empty() ? "" : (boost::format("%1% is\n%2%%3%") % label % value % end).str();
}

std::string accountOfOutput(const std::string& stream, const std::string& data) {
    return data.empty() ? " \nNo output on " + stream + " were performed by the utility"
                        : " \nThe output on " + stream + " was: \n" + data;
}

} // namespace

CmdLine::~CmdLine() {
    for (char* argument : argv) {
        free(argument);
    }
}

CmdLine& CmdLine::addArg(const std::string& argument) {
    argv.push_back(nullptr);
    argv[argv.size() - 2] = strdup(argument.c_str());
    return *this;
}

std::string CmdLine::toString() const {
    std::string text;
    for (size_t i = 0; argv[i] != nullptr; ++i) {
        if (i != 0) {
            text += ' ';
        }
        text += *argv[i] == '\0' ? "''" : escapeForShell(argv[i]);
    }
    return text;
}

const char* ExecCmd::Failed(bool wantName) {
    return wantName ? "ExecCmd::ExFailed" : "Execution of %1% failed with return code %2%.\n%3%%4%%5%%6%";
}

ExecCmd::ExecCmd(const std::string& path) : path(path) {
    CmdLine::addArg(path);
}

void ExecCmd::setEnv(const std::string& name, const std::string& value) {
    env[name] = value;
}

void ExecCmd::run() {
    execute();
    if (status != 0) {
        reportError();
    }
}

int ExecCmd::exec() {
    try {
        return execute();
    } catch (...) {
        return status;
    }
}

int ExecCmd::execute() {
    started = true;
    errno = 0;
    status = forkExecvGetOutErr(stdinData, stdoutData, stderrData, path, argv, user, chdirToHome, env);
    errnoValue = errno;
    lastError = errnoValue != 0 ? strerror(errnoValue) : "";
    finished = true;
    return status;
}

// The position is a fixed one: it belongs to the text that readers of the logs know this failure by.
void ExecCmd::reportError() const {
    throw ExFailed("void brask::ExecCmd::reportError() const", "lib/process/lib/ExecCmd", 76) % toString() %
        status % block("Stdin", stdinData) % block("Stdout", stdoutData) % block("Stderr", stderrData) %
        block("Last error", lastError);
}

std::string ExecCmd::describeResult() const {
    std::string text = "The return code was " + std::to_string(status) +
                       accountOfOutput("STDOUT", stdoutData) + accountOfOutput("STDERR", stderrData);
    if (!lastError.empty()) {
        text += " \nThe last error was: \n" + lastError;
    }
    return text;
}

} // namespace brask
