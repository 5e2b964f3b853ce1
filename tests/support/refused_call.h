#pragma once

#include "tests/support/temp_dir.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stddef.h>
#include <sys/prctl.h>

namespace test_support {

/// From here on the kernel answers this process's system calls of that number with `error`. It can't be
/// undone, so it is for child processes.
inline void refuseCall(unsigned number, unsigned error) {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    requireSuccess(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                       prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0,
                   "seccomp");
}

} // namespace test_support
