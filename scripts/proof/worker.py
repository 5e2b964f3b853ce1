"""Processes that try cases side by side, each in a sandbox of its own."""

import os
import resource
import shutil
import signal
import sys
import tempfile
from concurrent.futures import ProcessPoolExecutor
from contextlib import contextmanager
from pathlib import Path

from sandbox import Build, Sandbox, become_subreaper, can_have_own_mounts, enter_own_mounts

DESCRIPTORS = 1024  # what a login shell has; closing them one by one under strace takes a while

HOME_PREFIX = "backup-sign-proof."

sandbox = None  # this process's


def prepare(build_folder, home, own_mounts):
    global sandbox
    os.umask(0o022)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_NOFILE, (DESCRIPTORS, DESCRIPTORS))
    become_subreaper()
    if own_mounts:
        enter_own_mounts()
    sandbox = Sandbox(Build(build_folder), home, own_mounts)


def remove_strays(memory):
    """What runs that were killed have left."""
    for folder in memory.glob(f"{HOME_PREFIX}*"):
        if not Path("/proc", folder.name.split(".")[1]).exists():
            shutil.rmtree(folder, ignore_errors=True)


@contextmanager
def workers(build_folder, jobs):
    """A pool of processes that have run prepare(). Without mounts of their own there is one, on the build's tree."""
    # So that what was laid out is cleared away.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("stopped"))
    own_mounts = can_have_own_mounts()
    memory = Path("/dev/shm" if os.access("/dev/shm", os.W_OK) else tempfile.gettempdir())
    remove_strays(memory)
    home = tempfile.mkdtemp(prefix=f"{HOME_PREFIX}{os.getpid()}.", dir=memory)
    pool = ProcessPoolExecutor(jobs if own_mounts else 1, initializer=prepare,
                               initargs=(build_folder, home, own_mounts))
    try:
        yield pool
    finally:
        pool.shutdown(cancel_futures=True)
        shutil.rmtree(home, ignore_errors=True)
        Sandbox.put_back(Build(build_folder))
