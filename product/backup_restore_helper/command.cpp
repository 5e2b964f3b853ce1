#include "product/backup_restore_helper/command.h"

#include "product/backup_restore_helper/descriptor.h"
#include "product/backup_restore_helper/failure.h"
#include "product/backup_restore_helper/key_store.h"

#include <string_view>

#include <sys/stat.h>

namespace backup_restore_helper {

namespace {

const std::string standardOutput = "standard output";

void dispatch(const KeyStore& keyStore, int argc, const char* const* argv) {
    const std::string_view command = argc == 2 ? argv[1] : "";
    if (command == "--get-backup-certificate") {
        writeAll(STDOUT_FILENO, keyStore.load(), standardOutput);
    } else if (command == "--set-backup-certificate") {
        // One byte more than fits tells an over-long pair from one that just fits.
        keyStore.store(readAtMost(STDIN_FILENO, KeyStore::maxPairSize + 1, "standard input"));
    } else {
        throw Failure("Exactly one argument is needed: --get-backup-certificate or --set-backup-certificate");
    }
}

} // namespace

int runCommand(const std::string& productRoot, int argc, const char* const* argv) {
    try {
        umask(S_IRWXG | S_IRWXO);
        reserveStandardStreams();
        dispatch(KeyStore(productRoot + "/var/backup_certificate"), argc, argv);
        return 0;
    } catch (const Failure& failure) {
        try {
            writeAll(STDOUT_FILENO, std::string(failure.what()) + "\n", standardOutput);
        } catch (const Failure&) {
            // Nobody is left to be told; the exit status says it all.
        }
    }
    return 1;
}

} // namespace backup_restore_helper
