"""Full disks and quotas: the same scenarios where a folder's file system, or what a file may hold, is at its end."""

import os
import resource
import signal
from dataclasses import dataclass

import plan
import scenarios
from sandbox import FILLER, PAGE, MS_REMOUNT, mount, unmount

ROOMY = "size=16m"


def files_at_risk(sandbox):
    """Where a run may write, by the name of the folder that can be full."""
    return {
        "dump": [sandbox.volumes[-1]],
        "session": [sandbox.session / "migration.log", sandbox.session / "migration.result"],
        "custom": [sandbox.custom / "custom.log", sandbox.custom / "profile.log"],
        "store": [sandbox.store / "pair.pem.new"],
        "published": [sandbox.published],
    }


@dataclass(frozen=True)
class FullDisk:
    """A folder with `occurrence` free pages on a file system of its own."""

    scenario: scenarios.Scenario
    target: str
    occurrence: int
    call: str = "full disk"
    fault: str = "ENOSPC"
    lasting: bool = True

    @property
    def name(self):
        return f"{self.scenario.name} | {self.call} {self.target} {self.occurrence}"

    def start(self, sandbox, _):
        fill(self.folder(sandbox), self.occurrence)
        outcome = plan.start_undisturbed(self.scenario, sandbox)
        outcome.met = [written(path) for path in files_at_risk(sandbox)[self.target]]
        return outcome

    def folder(self, sandbox):
        return files_at_risk(sandbox)[self.target][0].parent

    def relieve(self, sandbox):
        mount("none", self.folder(sandbox), None, MS_REMOUNT, ROOMY)

    def clear(self, sandbox):
        unmount(self.folder(sandbox))


@dataclass(frozen=True)
class SizeLimit:
    """No file may grow beyond `occurrence` bytes; what would is refused, or ends the process by SIGXFSZ."""

    scenario: scenarios.Scenario
    occurrence: int
    fault: str  # EFBIG or SIGXFSZ
    call: str = "size limit"
    lasting: bool = True

    @property
    def name(self):
        return f"{self.scenario.name} | {self.call} {self.occurrence} {self.fault}"

    def start(self, sandbox, _):
        outcome = plan.start_undisturbed(self.scenario, sandbox, self.apply)
        outcome.met = [written(path) for paths in files_at_risk(sandbox).values() for path in paths]
        return outcome

    def apply(self):
        resource.setrlimit(resource.RLIMIT_FSIZE, (self.occurrence, resource.RLIM_INFINITY))
        signal.signal(signal.SIGXFSZ, signal.SIG_DFL if self.fault == "SIGXFSZ" else signal.SIG_IGN)

    def relieve(self, sandbox):
        """The limit was that of the run alone."""

    clear = relieve


def written(path):
    """The write that meets the fault, as a trace would have it."""
    return f"write(0<{path}>"


def fill(folder, pages):
    """Puts a file system over the folder that holds what the folder holds and has room for so many pages."""
    folder.mkdir(mode=0o750, exist_ok=True)
    held = {entry.name: (folder / entry.name).read_bytes() for entry in os.scandir(folder) if entry.is_file()}
    mode = folder.stat().st_mode
    mount("none", folder, "tmpfs", 0, ROOMY)
    folder.chmod(mode)
    used = 1
    (folder / FILLER).write_bytes(bytes(PAGE))
    for name, content in held.items():
        used += -(-len(content) // PAGE)
        (folder / name).touch(mode=0o600 if name == "pair.pem" else 0o644)
        (folder / name).write_bytes(content)
    mount("none", folder, None, MS_REMOUNT, f"size={(used + pages) * PAGE}")


def targets_of(scenario):
    if scenario.session:
        yield "session"
    if scenario.session and scenario.command != "record":
        yield "custom"
    if scenario.command == "sign":
        yield "dump"
    if scenario.command in ("generate", scenarios.SET) or not scenario.stored:
        yield "store"
    if scenario.command == "generate" or (scenario.command == "sign" and not scenario.stored):
        yield "published"


def limits_of(sandbox):
    pair, volume = len(sandbox.pair_text), len(sandbox.contents[-1])
    document = len(sandbox.signed[-1]) - volume
    return (0, 1, 100, 300, 600, 1000, pair - 1, pair, volume, volume + 1, volume + document - 1, volume + document)


def cases_of(scenario, sandbox):
    if scenario.traced not in ("tool", "itself"):
        return []
    disks = [FullDisk(scenario, target, pages) for target in targets_of(scenario) for pages in (0, 1, 2)]
    limits = [SizeLimit(scenario, limit, fault) for limit in limits_of(sandbox) for fault in ("EFBIG", "SIGXFSZ")]
    return (disks if sandbox.own_mounts else []) + limits
