// The tail of a dump is whatever an attacker puts there: verifying it ends in an error of the family, never
// well.

#include "backup_sign_lib/utils.h"
#include "commons/errors/ex_base.h"

#include <libxml/xmlerror.h>

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string publicKey = brask::generateServerKeypair().second;
    try {
        brask::verifyDumpFile(std::string(reinterpret_cast<const char*>(data), size), brask::Digest(),
                              publicKey);
        std::abort();
    } catch (const brask::ExTraceableBase<brask::ExDefault>&) {
        // A failed parse leaves its error handler installed on a buffer that is gone.
        xmlSetGenericErrorFunc(nullptr, nullptr);
    }
    return 0;
}
