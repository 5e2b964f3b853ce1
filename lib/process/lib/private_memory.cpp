#include "lib/process/lib/private_memory.h"

#include <sys/prctl.h>

namespace brask {

void keepMemoryPrivate() {
#ifdef NDEBUG
    prctl(PR_SET_DUMPABLE, 0); // can't fail with this argument
#endif
}

} // namespace brask
