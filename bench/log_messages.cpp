// Writes an execution log of 10,000 messages, half of them about 100 objects, into the session directory that
// it is given. bench/instructions counts what that takes.

#include "commons/run/session_files.h"
#include "commons/run/xml_log.h"
#include "tests/support/fixed_params.h"

#include <pwd.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        return 1;
    }
    // Whoever runs this can give the log to himself.
    const test_support::FixedParams params{{{"BSAADM", getpwuid(geteuid())->pw_name}}};
    const brask::SessionLifetimeController session(argv[1]);
    brask::XmlLog log("");
    const brask::ExTraceableBase<brask::ExDefault> message("", "Unable to back up the mail of the domain");
    for (int i = 0; i < 5000; ++i) {
        log.AddMessage(40, message);
        log.AddMessage(40, message, {{"example" + std::to_string(i % 100) + ".com", "Domain"}});
    }
    return 0;
}
