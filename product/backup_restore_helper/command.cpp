#include "product/backup_restore_helper/command.h"

#include "product/backup_restore_helper/descriptor.h"
#include "product/backup_restore_helper/failure.h"
#include "product/backup_restore_helper/key_pair.h"
#include "product/backup_restore_helper/key_store.h"

#include <algorithm>
#include <ctime>
#include <string_view>

#include <sys/stat.h>

namespace backup_restore_helper {

namespace {

constexpr std::string_view helpText =
    R"(Keeps the key pair with which backup_sign signs dumps, and every pair that it has replaced.

For backup_sign:
  --get-backup-certificate           print the current pair
  --set-backup-certificate           make the pair on standard input the current one
For people:
  --list-backup-certificates         list the current pair and the archived ones: since when
                                     it was current, fingerprint, state, name
  --restore-backup-certificate NAME  make the archived pair NAME the current one, and publish
                                     its public key
  --publish-backup-certificate       write the current public key to admin/htdocs/bu_pubkey.txt
  --help                             print this text

The pair that a new one replaces is kept. The exit status is 0, or 1 after a line with the reason.
)";

struct Call {
    const KeyStore keyStore;
    const std::string publicFolder;
    const mode_t publicMode;
    const std::string argument;
};

void print(std::string_view text) {
    writeAll(STDOUT_FILENO, text, "standard output");
}

void help(const Call& /*call*/) {
    print(helpText);
}

void get(const Call& call) {
    print(call.keyStore.load().wireForm());
}

void set(const Call& call) {
    // One byte more than fits tells an over-long pair from one that just fits.
    call.keyStore.store(readAtMost(STDIN_FILENO, KeyPair::maxSize + 1, "standard input"));
}

void publish(const Call& call) {
    publishKey(call.keyStore, call.publicFolder, call.publicMode);
}

void restore(const Call& call) {
    call.keyStore.restore(call.argument);
    publish(call);
}

std::string lineOf(const KeyStore::Entry& entry) {
    char since[64];
    tm fields{};
    since[strftime(since, sizeof since, "%Y-%m-%dT%H:%M:%SZ", gmtime_r(&entry.since, &fields))] = '\0';
    const auto fingerprint = entry.pair ? fingerprintOf(entry.pair->publicKey) : std::nullopt;
    return std::string(since) + " " + fingerprint.value_or("unusable") +
           (entry.isCurrent ? " current " : " archived ") + entry.name + "\n";
}

void list(const Call& call) {
    std::string lines;
    for (const KeyStore::Entry& entry : call.keyStore.list()) {
        lines += lineOf(entry);
    }
    print(lines);
}

struct Command {
    std::string_view option;
    int arguments;
    void (*run)(const Call& call);
};

constexpr Command commands[] = {
    {"--get-backup-certificate", 0, get},         {"--set-backup-certificate", 0, set},
    {"--list-backup-certificates", 0, list},      {"--restore-backup-certificate", 1, restore},
    {"--publish-backup-certificate", 0, publish}, {"--help", 0, help},
};

/// What is given is taken for nothing but itself: an abbreviation, or one argument too many, may be a slip.
const Command& findCommand(int argc, const char* const* argv) {
    const std::string_view option = argc > 1 ? argv[1] : "";
    const Command* command = std::find_if(std::begin(commands), std::end(commands),
                                          [&](const Command& known) { return known.option == option; });
    if (command == std::end(commands)) {
        throw Failure(option.empty() ? "An argument is needed; see --help"
                                     : "Unknown argument " + std::string(option) + "; see --help");
    }
    if (argc != 2 + command->arguments) {
        throw Failure(std::string(option) + " takes " + (command->arguments == 0 ? "no" : "one") +
                      " argument; see --help");
    }
    return *command;
}

void tell(const std::exception& failure) {
    try {
        // Not joined, as the memory may have run out.
        print(failure.what());
        print("\n");
    } catch (const std::exception&) {
        // Nobody is left to be told; the exit status says it all.
    }
}

} // namespace

int runCommand(const std::string& productRoot, int argc, const char* const* argv) {
    const mode_t callersMask = umask(S_IRWXG | S_IRWXO);
    try {
        reserveStandardStreams();
        const Command& command = findCommand(argc, argv);
        command.run({KeyStore(productRoot + "/var/backup_certificate"), productRoot + "/admin/htdocs",
                     static_cast<mode_t>(0666 & ~callersMask), command.arguments > 0 ? argv[2] : ""});
        return 0;
    } catch (const std::exception& failure) {
        tell(failure);
    }
    return 1;
}

} // namespace backup_restore_helper
