"""The system calls of verifying a small dump, each with what it is for."""

import re
import subprocess
from collections import Counter

import tracer
from comparisons import SMALL
from measure import ENVIRONMENT, Command, run

TOOL, CHILD, HELPER = "tool", "child", "helper"

# By process: what the start of a call matches, and what it is for. The first that matches counts.
REASONS = {
    TOOL: (
        (r"loading", "The system's loader: each shared library is opened, looked at, mapped in five pieces or so, and partly "
                     "made read-only. Four come with libxml2: ICU, its data, zlib, liblzma."),
        (r"futex", "\"Only once\" in OpenSSL, libxml2 and the C++ library, which wakes waiters, of which there are none."),
        (r"getrandom|brk|m(un)?map\(", "Memory: malloc's seed, the growing heap, the block of 1 MiB that is hashed."),
        (r"fcntl\([012]<.*F_GETFD", "Are the standard streams open? Otherwise a volume could become one of them."),
        (r"prctl\(PR_SET_DUMPABLE", "No core file, which would hold the private key."),
        (r"(openat|newfstatat|read|lseek|close)\(.*(/etc/localtime|/zoneinfo/)",
         "Local time, in the records of profiling. Without a file for them they are made all the same, as one that can't "
         "be made is logged."),
        (r"(openat|newfstatat|read|close)\(.*/bsa\.conf", "The panel's configuration, which says where the helper is."),
        (r"rt_sig(pending|procmask)", "A helper that ends early must not end the tool by SIGPIPE."),
        (r"pipe2|fcntl\(.*O_NONBLOCK|close\(\d+<pipe:", "Three pipes to the helper; none blocks the tool."),
        (r"clone", "fork()."),
        (r"pselect6|read\(\d+<pipe:", "What the helper says, and the end of both its outputs."),
        (r"wait4", "The helper's exit code."),
        (r"newfstatat\(AT_FDCWD.*/dump\.", "Is the volume there? Is it a regular file? Two questions with two messages."),
        (r"(openat|newfstatat|lseek|read|close)\(.*/dump\.",
         "First the last 4,096 bytes, whose document tells where the content ends; then the content, from its start."),
        (r"exit_group", "The end."),
    ),
    CHILD: (
        (r"set_robust_list", "The C library's start of a forked process."),
        (r"rt_sigprocmask", "SIGPIPE is the helper's own affair again."),
        (r"dup2|close\(", "The pipes become the standard streams."),
        (r"close_range", "No other descriptor gets to the helper."),
    ),
    HELPER: (
        (r"loading", "execve and the loader, for the C library alone: the C++ library is linked in."),
        (r"getrandom|brk", "Memory."),
        (r"newfstatat\(.*/proc/self/exe|readlink\(.*/proc/self/exe", "Where it is itself, which tells where its store is; the size of the link first."),
        (r"umask", "What it writes is for nobody else."),
        (r"fcntl\([012]<.*F_GETFD", "Are the standard streams open?"),
        (r"(openat|newfstatat|read|close)\(.*/pair\.pem", "The pair: a regular file, read to its end."),
        (r"write\(1<pipe:", "The pair, to the tool."),
        (r"exit_group", "The end."),
    ),
}
NONE = "**none**"


def trace(site):
    """The lines of strace of a verification and its helper, and the page faults of another one."""
    file, verify = site.work / "trace", (site.tool, "--verify-dump", site.signed(SMALL))
    subprocess.run([*tracer.strace(file, (), options=("-f",)), *verify], env=ENVIRONMENT, cwd=site.work,
                   stdin=subprocess.DEVNULL, check=True)
    return tracer.read_trace(file), run(Command("", verify)).faults


def calls(lines):
    """(process, call) for each line; a call of the loader is "loading NAME". The loader's last one is its only munmap."""
    processes, loading = {}, set()
    for pid, name, rest in filter(None, map(tracer.parse, lines)):
        if name == "execve":
            processes[pid] = HELPER if processes else TOOL
            loading.add(pid)
        process = processes.setdefault(pid, CHILD)
        yield process, f"{'loading ' if pid in loading else ''}{name}({rest}"
        if name == "munmap":
            loading.discard(pid)


def reason(process, call):
    return next((text for pattern, text in REASONS[process] if re.match(pattern, call)), NONE)


def table(lines, faults):
    counts, names = Counter(), {}
    for process, call in calls(lines):
        row = (process, reason(process, call))
        counts[row] += 1
        names.setdefault(row, Counter())[call.removeprefix("loading ").split("(")[0]] += 1
    rows = ["| Process | Number | Calls | What for |", "|---|---|---|---|"]
    for row in sorted(counts, key=lambda row: (TOOL, CHILD, HELPER).index(row[0])):
        listed = ", ".join(f"{name} {count}" if count > 1 else name for name, count in names[row].most_common())
        rows.append(f"| {row[0]} | {counts[row]} | {listed} | {row[1]} |")
    return "\n".join([*rows, f"| all | {counts.total()} | | and {faults} page faults |"])
