"""Runs a command under strace and reads what it wrote."""

import os
import re
import signal
import subprocess
import time
from dataclasses import dataclass, field

LINE = re.compile(r"^(?:(\d+) +)?(\w+)\((.*)$")
KILLED = re.compile(r"\+\+\+ killed by SIG(\w+)")
# What opens and closes descriptors: always watched, so that the ones left at the end are known.
DESCRIPTOR_CALLS = ("openat", "close", "pipe2", "dup2", "memfd_create", "socket", "exit_group")

# Seconds: for a run that is known to hang, and for one that nobody expects to.
SHORT, LONG = 2, 300


@dataclass
class Outcome:
    status: int  # as subprocess has it: negative for a signal
    out: bytes
    err: bytes
    hung: bool = False
    orphans: int = 0  # descendants that nobody had waited for
    trace: list = field(default_factory=list)
    met: list = field(default_factory=list)  # the calls that the fault has met, as a trace has them


def met_calls(trace):
    """The calls that were made to fail, and the last one of a process that was killed."""
    met = [line for line in trace if "(INJECTED)" in line]
    return met + [before for before, line in zip(trace, trace[1:]) if KILLED.search(line)]


def strace(trace_file, calls, inject=(), options=()):
    """The words of an strace command, to stand before the command that it runs."""
    watched = ",".join(dict.fromkeys([*calls, *DESCRIPTOR_CALLS])) if calls else "all"
    words = ["strace", "-qq", "-y", "-s", "48", "-o", str(trace_file), *options, "-e", f"trace={watched}"]
    for rule in inject:
        words += ["-e", f"inject={rule}"]
    return words


def run(command, env, cwd, stdin=b"", give_up=None, before_exec=None):
    """Runs a command to its end and takes its orphans in. One that takes longer than LONG counts as hung, as does one
    that takes longer than SHORT when `give_up`, asked then, says so."""
    process = subprocess.Popen(command, env=env, cwd=cwd, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, start_new_session=True, preexec_fn=before_exec)
    hung = False
    try:
        out, err = talk(process, stdin, give_up)
    except subprocess.TimeoutExpired:
        hung = True
        os.killpg(process.pid, signal.SIGKILL)
        out, err = process.communicate()
    return Outcome(process.returncode, out, err, hung, reap_orphans(process.pid))


def talk(process, stdin, give_up):
    try:
        return process.communicate(stdin, SHORT)
    except subprocess.TimeoutExpired:
        if give_up is not None and give_up():
            raise
        return process.communicate(timeout=LONG - SHORT)


def reap_orphans(session, patience=20):
    """Waits for the processes that a run has left to this subreaper; what doesn't end is killed with its group."""
    count = 0
    end = time.monotonic() + patience
    while True:
        try:
            pid, _ = os.waitpid(-1, os.WNOHANG)
        except ChildProcessError:
            return count
        if pid != 0:
            count += 1
        elif time.monotonic() > end:
            os.killpg(session, signal.SIGKILL)
            end += patience
        else:
            time.sleep(0.001)


def read_trace(path):
    """The lines of a trace, with calls that were interrupted by another process's put together again."""
    begun = {}
    lines = []
    for line in path.read_text(errors="replace").splitlines() if path.exists() else []:
        pid = line.split(" ", 1)[0]
        if line.endswith("<unfinished ...>"):
            begun[pid] = line.removesuffix("<unfinished ...>").rstrip()
        elif " resumed>" in line and pid in begun:
            lines.append(begun.pop(pid) + line.split(" resumed>", 1)[1])
        else:
            lines.append(line)
    return lines + list(begun.values())


def parse(line):
    """(process, call, arguments and result), or None for a line that is no call."""
    found = LINE.match(line)
    return (found.group(1), found.group(2), found.group(3)) if found else None


def open_descriptors(trace, inherited=(0, 1, 2)):
    """The descriptors, beyond the inherited ones, that a process still has when it ends; {} if it was killed."""
    table = {}
    for line in trace:
        call = parse(line)
        if call is None:
            continue
        _, name, rest = call
        if name == "exit_group":
            return table
        if name == "close":
            table.pop(int(re.match(r"-?\d+", rest).group()), None)
        elif name == "pipe2" and rest.endswith("= 0"):
            ends = re.match(r"\[(\d+)<[^>]*>, (\d+)<", rest)
            table.update({int(end): "pipe" for end in ends.groups()})
        elif name in ("openat", "memfd_create", "socket"):
            made = re.search(r"\) += (\d+)<(.*)>", rest)
            if made and int(made.group(1)) not in inherited:
                table[int(made.group(1))] = made.group(2)
    return {}
