#pragma once

#include <csignal>

#include <sys/resource.h>

namespace test_support {

/// Stands for a full disk: no file of this process can grow beyond the limit while it lives. For a child
/// process, since the signal of a write over the limit stays ignored.
struct FileSizeLimit {
    explicit FileSizeLimit(rlim_t bytes) {
        signal(SIGXFSZ, SIG_IGN);
        set(bytes);
    }

    ~FileSizeLimit() { set(RLIM_INFINITY); }

    static void set(rlim_t bytes) {
        const rlimit limit{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
};

} // namespace test_support
