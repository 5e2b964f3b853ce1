// Signs a dump with the key pair of this server, and verifies it.
//
//     sign_dump VOLUME…
//
// The pair is fetched from the panel's helper; if there is none, one is made.

#include "backup_sign_lib/backup_sign.h"
#include "commons/ex_formatters.h"
#include "commons/exceptions.h"
#include "commons/param_source.h"

#include <cstdio>
#include <exception>

namespace {

// A program on the library says once, before main, where the library's parameters come from.
brask::ParamFromBSAStrategy parameters;
[[maybe_unused]] const bool parametersInstalled = (brask::paramSource = &parameters, true);

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> volumes(argv + 1, argv + argc);
    if (volumes.empty()) {
        std::printf("Usage: %s VOLUME...\n", argv[0]);
        return 1;
    }
    try {
        brask::BackupSign backupSign;
        backupSign.SignDump(volumes);
        // Whether the signature reached the disk shows only here.
        backupSign.VerifyDump(volumes);
        std::printf("signed and verified\n");
        return 0;
    } catch (const brask::IExTraceable& e) {
        // Which error it is, and where it was raised, is in the object; what() is its message.
        std::printf("%s\n", brask::GetErrorText(e).c_str());
        return 1;
    } catch (const std::exception& e) {
        std::printf("%s\n", e.what());
        return 1;
    }
}
