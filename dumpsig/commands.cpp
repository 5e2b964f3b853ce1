#include "dumpsig/commands.h"

#include "commons/crypto/openssl.h"
#include "lib/process/lib/this_process.h"

#include <csignal>
#include <exception>

namespace dumpsig {

namespace {

ExitCode dispatch(const CommandLine& call) {
    switch (call.command) {
    case Command::kVerify:
        return verifyCommand(call);
    case Command::kInfo:
        return infoCommand(call);
    case Command::kStrip:
        return stripCommand(call);
    case Command::kCat:
        return catCommand(call);
    case Command::kFingerprint:
        return fingerprintCommand(call);
    case Command::kShowText:
        break;
    }
    writeToStandardOutput(call.text);
    return kIntact;
}

} // namespace

int run(int argc, const char* const* argv) {
    try {
        brask::reserveStandardStreams();
        brask::setUpOpenSsl();
        // At the limit of a file's size a write is to fail like any other, not to end the process.
        std::signal(SIGXFSZ, SIG_IGN);
        return dispatch(parseCommandLine(argc, argv));
    } catch (const std::exception& e) {
        complain(e.what());
        return kUnknown;
    }
}

} // namespace dumpsig
