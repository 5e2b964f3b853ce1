"""Processes that try cases side by side, each in a sandbox of its own."""

import fcntl
import os
import resource
import shutil
import signal
import sys
import tempfile
from concurrent.futures import ProcessPoolExecutor
from contextlib import contextmanager

from sandbox import Build, Sandbox, become_subreaper, can_have_own_mounts, enter_own_mounts, mount

DESCRIPTORS = 1024  # what a login shell has; closing them one by one under strace takes a while
MEMORY = "size=512m"  # of each process, so that no runaway trace or log takes the machine's

sandbox = None  # this process's


def prepare(build_folder, home, own_mounts):
    global sandbox
    os.umask(0o022)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_NOFILE, (DESCRIPTORS, DESCRIPTORS))
    become_subreaper()
    if own_mounts:
        enter_own_mounts()
        mount("none", home, "tmpfs", 0, MEMORY)  # goes with this process, whatever ends it
    sandbox = Sandbox(Build(build_folder), home, own_mounts)


@contextmanager
def workers(build_folder, jobs):
    """A pool of processes that have run prepare(). Without mounts of their own there is one, on the build's tree."""
    # So that what was laid out is cleared away.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("stopped"))
    own_mounts = can_have_own_mounts()
    lock = os.open(build_folder, os.O_RDONLY)  # kept to the end; moving the build's tree would take others' mounts away
    fcntl.flock(lock, fcntl.LOCK_SH if own_mounts else fcntl.LOCK_EX)
    home = tempfile.mkdtemp(prefix="backup-sign-proof.")
    pool = ProcessPoolExecutor(jobs if own_mounts else 1, initializer=prepare,
                               initargs=(build_folder, home, own_mounts))
    try:
        yield pool
    finally:
        pool.shutdown(cancel_futures=True)
        shutil.rmtree(home, ignore_errors=True)
        Sandbox.put_back(Build(build_folder))
