#include "lib/process/lib/this_process.h"

#include "commons/errors/system_error.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace brask {

void reserveStandardStreams() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open takes the lowest free number, which is this one. Opened the wrong way round, it fails as it
        // did closed.
        if (fcntl(fd, F_GETFD) == -1 && open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) {
            throwErrno("/dev/null");
        }
    }
}

void keepMemoryPrivate() {
#ifdef NDEBUG
    prctl(PR_SET_DUMPABLE, 0); // can't fail with this argument
#endif
}

} // namespace brask
