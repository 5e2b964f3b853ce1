// Runs a command, profiles it, and shows what the command printed and what the profile's file holds.
//
//     run_command PROFILE-FILE COMMAND [ARGUMENT…]

#include "commons/param_source.h"
#include "commons/profiling.h"
#include "lib/process/lib/ExecCmd.h"

#include <exception>
#include <fstream>
#include <iostream>

namespace {

// A program on the library says once, before main, where the library's parameters come from.
brask::ParamFromBSAStrategy parameters;
[[maybe_unused]] const bool parametersInstalled = (brask::paramSource = &parameters, true);

std::string runProfiled(brask::ExecCmd& command, brask::ProfilingContext& profile) {
    // The start record is written here and the finish record at the end of the scope, also when the command
    // fails.
    const brask::ProfilingOperation operation(
        brask::ProfilingOperationType::RestoreRunCommand,
        {{brask::ProfilingAttribute::ProcessCommandLine, command.toString()}}, &profile);
    command.run();
    return command.stdoutData;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cout << "Usage: " << argv[0] << " PROFILE-FILE COMMAND [ARGUMENT...]\n";
        return 1;
    }
    int status = 0;
    try {
        brask::ExecCmd command(argv[2]);
        for (int i = 3; i < argc; ++i) {
            command.addArg(argv[i]);
        }
        brask::ProfilingContext profile(argv[1]);
        std::cout << runProfiled(command, profile);
    } catch (const std::exception& e) {
        // The text holds the command line, the exit status and all that the command printed.
        std::cout << e.what();
        status = 1;
    }
    std::cout << "--- " << argv[1] << "\n" << std::ifstream(argv[1]).rdbuf();
    return status;
}
