// backup_sign signs a finished dump and verifies it later. This file turns the command line into one
// operation of BackupSign, and every failure into a message on standard output and exit code 1.

#include "backup_sign/command_line.h"
#include "backup_sign/run_lifetime.h"
#include "backup_sign_lib/backup_sign.h"
#include "commons/crypto/openssl.h"
#include "commons/errors/error.h"
#include "commons/log/log_facade.h"
#include "commons/panel/param_source.h"
#include "lib/process/lib/this_process.h"

#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace brask;

BRASK_ERROR_TAG(CertificateOutputError, "Unable to write the certificate")

ParamFromBSAStrategy bsaParameters;

// Runs before main: from here on the whole library asks the panel's runtime configuration.
[[maybe_unused]] const void* const paramSourceInstalled = paramSource = &bsaParameters;

void printCertificate(BackupSign& backupSign) {
    std::cout << backupSign.GetCertificate() << std::endl;
    if (!std::cout) {
        BRASK_THROW(CertificateOutputError);
    }
}

struct DispatchRow {
    const char* option;
    void (*run)(BackupSign& backupSign, const boost::program_options::variable_value& value);
};

using Value = boost::program_options::variable_value;
using Paths = std::vector<std::string>;

// The first row whose option was given is the command; any other on the same line is ignored.
constexpr DispatchRow kDispatchTable[] = {
    {"generate", [](BackupSign& sign, const Value&) { sign.GenerateSign(); }},
    {"get-certificate", [](BackupSign& sign, const Value&) { printCertificate(sign); }},
    {"sign-dump", [](BackupSign& sign, const Value& value) { sign.SignDump(value.as<Paths>()); }},
    {"verify-dump", [](BackupSign& sign, const Value& value) { sign.VerifyDump(value.as<Paths>()); }},
    {"sign", [](BackupSign& sign, const Value& value) { sign.SignXml(value.as<std::string>(), ""); }},
    {"verify", [](BackupSign& sign, const Value& value) { sign.VerifyXml(value.as<std::string>(), ""); }},
};

void dispatch(const CommandLine& commandLine) {
    BackupSign backupSign;
    for (const DispatchRow& row : kDispatchTable) {
        if (commandLine.has(row.option)) {
            row.run(backupSign, commandLine.values()[row.option]);
            return;
        }
    }
    printHelp(commandLine.visible());
}

int run(int argc, char** argv) {
    reserveStandardStreams();
    keepMemoryPrivate();
    const CommandLine commandLine(argc, argv);
    if (commandLine.values().empty() || commandLine.has("help")) {
        printHelp(commandLine.visible());
        return 1;
    }
    setUpOpenSsl();
    RunLifetime lifetime(argc, argv,
                         {.sessionPath = commandLine.values()["session-path"].as<std::string>(),
                          .verbose = commandLine.has("verbose"),
                          .debug = commandLine.has("debug")});
    const int result = runGuarded(lifetime, [&commandLine] { dispatch(commandLine); });
    lifetime.SetExitCode(result);
    return result;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        logMessage(level::kVerbose, "{}", e.what());
        std::cout << "Error: " << e.what() << std::endl;
    } catch (...) {
        logMessage(level::kVerbose, "Unknown error");
        std::cout << "Unknown error" << std::endl;
    }
    return 1;
}
