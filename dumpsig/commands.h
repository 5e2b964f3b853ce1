#pragma once

// The commands, each in a source of its name (verify_command.cpp …). It writes its results to standard output
// and raises an exception, any std::exception, for what makes exit code 2.

#include "dumpsig/command_line.h"
#include "dumpsig/exit_code.h"

namespace dumpsig {

ExitCode verifyCommand(const CommandLine& call);
ExitCode catCommand(const CommandLine& call);
ExitCode infoCommand(const CommandLine& call);
ExitCode stripCommand(const CommandLine& call);
ExitCode fingerprintCommand(const CommandLine& call);

} // namespace dumpsig
