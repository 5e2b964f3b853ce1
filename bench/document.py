"""Puts what was measured into docs/performance.md."""

import os
import platform
import re
import subprocess
from pathlib import Path


def replace_section(text, name, content):
    """What stands between `<!-- NAME -->` and `<!-- end -->`."""
    section = re.compile(rf"(<!-- {name} -->\n).*?(<!-- end -->)", re.S)
    replaced, count = section.subn(lambda found: f"{found.group(1)}\n{content}\n\n{found.group(2)}", text)
    if count != 1:
        raise SystemExit(f"bench: the document has {count} sections {name}")
    return replaced


def first_line(*argv):
    return subprocess.run(argv, stdout=subprocess.PIPE, check=True, text=True).stdout.splitlines()[0]


def machine(load):
    """What it was measured on, without names. `load`: the average of the minute before."""
    cpu = Path("/proc/cpuinfo").read_text()
    model = re.search(r"^model name\s*: (.*)$", cpu, re.M).group(1)
    virtual = " of a virtual machine, shared with others" if re.search(r"^flags.*\bhypervisor\b", cpu, re.M) else ""
    extension = "with" if re.search(r"^flags.*\bsha_ni\b", cpu, re.M) else "without"
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / (1 << 30)
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    priority = "" if os.sched_getscheduler(0) == os.SCHED_OTHER else ", measured with real-time priority"
    compiler = re.search(r"[\d.]+$", first_line("g++", "--version")).group()
    return (f"{os.cpu_count()} cores ({model}, {extension} SHA instructions){virtual}; {memory:.0f} GiB of memory; {system}, "
            f"Linux {platform.release().split('-')[0]}, g++ {compiler}, {' '.join(first_line('openssl', 'version').split()[:2])}. "
            f"Load average before: {load:.2f}{priority}.")
