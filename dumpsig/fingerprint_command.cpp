#include "dumpsig/commands.h"
#include "dumpsig/key_file.h"
#include "dumpsig/output.h"

#include <exception>

namespace dumpsig {

ExitCode fingerprintCommand(const CommandLine& call) {
    ExitCode result = kIntact;
    for (const std::string& path : call.files) {
        std::vector<PublicKey> keys;
        try {
            keys = readKeyFile(path);
        } catch (const std::exception& e) {
            complain(e.what());
            result = kUnknown;
        }
        for (const PublicKey& key : keys) {
            writeToStandardOutput(key.fingerprint + " " + oneLine(path) + "\n");
        }
    }
    return result;
}

} // namespace dumpsig
