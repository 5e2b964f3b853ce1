"""The system calls of the road, each with the errors that it can give."""

import re

# What a call can give whatever its arguments are. An empty text: it can't fail, so it is only killed at.
ERRORS = {
    "access": "EACCES EIO ENOMEM",
    "arch_prctl": "",
    "brk": "ENOMEM",  # see REFUSED
    "chmod": "EIO EPERM EROFS",
    "chown": "EDQUOT EIO EPERM EROFS",
    "clone": "EAGAIN ENOMEM",
    "clock_nanosleep": "EINTR",
    "close": "EIO EINTR EDQUOT ENOSPC",
    "close_range": "ENOMEM ENOSYS",
    "connect": "ECONNREFUSED EACCES EINTR",
    "dup2": "EBUSY",
    "exit_group": "",
    "faccessat2": "EACCES EIO ENOMEM",
    "fchmod": "EIO EPERM EROFS",
    "fchmodat": "EIO EPERM EROFS",
    "fchown": "EDQUOT EIO EPERM EROFS",
    "fcntl": "",
    "flock": "ENOLCK EINTR",
    "fsync": "EIO EDQUOT EINTR ENOSPC",
    "ftruncate": "EIO EFBIG EINTR",
    "futex": "",
    "getdents64": "EIO ENOENT",
    "getegid": "",
    "geteuid": "",
    "getgid": "",
    "getpid": "",
    "getrandom": "EAGAIN EINTR ENOSYS",
    "getuid": "",
    "ioctl": "EIO ENOTTY",
    "linkat": "EDQUOT EIO EMLINK ENOSPC EPERM EROFS",
    "lseek": "EIO EOVERFLOW",
    "memfd_create": "EMFILE ENFILE ENOMEM",
    "mkdir": "EACCES EDQUOT EIO ENOMEM ENOSPC EROFS",
    "mkdirat": "EACCES EDQUOT EIO ENOMEM ENOSPC EROFS",
    "mmap": "ENOMEM EAGAIN",
    "mprotect": "ENOMEM EACCES",
    "munmap": "ENOMEM",
    "newfstatat": "EACCES EIO ENOMEM",
    "openat": "EMFILE EACCES EINTR EIO ENFILE ENOMEM",
    "pipe2": "EMFILE ENFILE",
    "prctl": "EINVAL EPERM",
    "pread64": "EIO EINTR",
    "prlimit64": "EPERM",
    "pselect6": "ENOMEM EINTR",
    "read": "EIO EINTR",
    "readlink": "EACCES EIO ENOMEM",
    "readlinkat": "EACCES EIO ENOMEM",
    "rename": "EACCES EDQUOT EIO ENOMEM ENOSPC EROFS",
    "renameat": "EACCES EDQUOT EIO ENOMEM ENOSPC EROFS",
    "renameat2": "EACCES EDQUOT EEXIST EINVAL EIO ENOSPC EROFS",
    "rseq": "ENOSYS",
    "rt_sigaction": "",
    "rt_sigpending": "",
    "rt_sigprocmask": "",
    "set_robust_list": "ENOSYS",
    "set_tid_address": "",
    "setrlimit": "EPERM",
    "socket": "EMFILE EACCES ENFILE ENOBUFS",
    "umask": "",
    "unlink": "EACCES EIO ENOMEM EROFS",
    "unlinkat": "EACCES EIO ENOMEM EROFS",
    "utimensat": "EACCES EIO EROFS",
    "wait4": "ECHILD EINTR",
    "write": "ENOSPC EDQUOT EFBIG EINTR EIO",
    "writev": "ENOSPC EDQUOT EFBIG EINTR EIO",
}
# Where the line in the trace matches, the call can give these instead.
PARTICULAR = (
    ("openat", re.compile("O_CREAT"), "ENOSPC EDQUOT EROFS EMFILE EACCES EINTR EIO ENFILE ENOMEM"),
    ("read", re.compile(r"^\d+<pipe:"), "EIO EINTR EAGAIN"),
    ("write", re.compile(r"^\d+<pipe:"), "EPIPE EIO EINTR EAGAIN"),
    # Nothing is written back when a pipe is closed.
    ("close", re.compile(r"^\d+<pipe:"), ""),
    # A close that is made to fail doesn't take place (see ONCE), and who locks again would wait for himself.
    ("close", re.compile(r"^\d+<[^>]*/backup_certificate/lock>"), ""),
    ("fcntl", re.compile("F_SETFL"), "EPERM"),
)
# Errors that ask for another try: one that lasts for ever is no fault of a machine.
PASSING = {"EAGAIN", "EINTR"}
# A close that is made to fail doesn't take place, while one that fails of itself frees the descriptor all the same:
# with all of them failing, the pipes to a child would never end.
ONCE = {"close"}
# How a call says no, where it is not by an error: brk gives a break below the one that was asked for.
REFUSED = {"brk": "retval=0"}
# From these on, memory runs out: the one and the other stand for each other in malloc.
MEMORY = ("brk", "mmap")


def errors_of(call, arguments):
    """The errors to try at a call with these arguments. A call that the table lacks is a LookupError."""
    for name, pattern, errors in PARTICULAR:
        if name == call and pattern.search(arguments):
            return errors.split()
    if call not in ERRORS:
        raise LookupError(f"the table of calls lacks {call}")
    return ERRORS[call].split()


def lasting_error_of(call, arguments):
    """The error that a call is tried with as a lasting one, or None."""
    if call in ONCE:
        return None
    return next((error for error in errors_of(call, arguments) if error not in PASSING), None)


def rule(call, error, when):
    """What strace is to inject."""
    return f"{call}:{REFUSED.get(call, 'error=' + error)}:when={when}"
