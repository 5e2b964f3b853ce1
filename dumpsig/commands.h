#pragma once

// The program and its commands, each of which has a source of its name (verify_command.cpp …). A command
// writes its results to standard output and raises an exception, any std::exception, for what makes kUnknown.

#include "dumpsig/command_line.h"
#include "dumpsig/output.h"

namespace dumpsig {

ExitCode verifyCommand(const CommandLine& call);
ExitCode catCommand(const CommandLine& call);
ExitCode infoCommand(const CommandLine& call);
ExitCode stripCommand(const CommandLine& call);
ExitCode fingerprintCommand(const CommandLine& call);

/// The whole program: the exit code for its arguments.
int run(int argc, const char* const* argv);

} // namespace dumpsig
