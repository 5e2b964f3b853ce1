"""The documented exceptions: what a fault may break, each with the reason. Everything else is a failure."""

import re
from dataclasses import dataclass
from pathlib import Path

TABLE = Path(__file__).parents[2] / "docs/reliability.md"


@dataclass(frozen=True)
class Exception_:
    name: str
    reason: str
    breaks: tuple  # the checks that may fail
    calls: str = ".*"  # of the calls that the fault has met, a pattern for "CALL(ARGUMENTS"
    faults: str = ".*"
    scenarios: str = ".*"
    traced: str = ".*"
    lasting: bool = False  # only where the fault lasts
    statuses: tuple = ()  # only with one of these ends
    first: bool = False  # only the first of these calls

    def excuses(self, check, case, outcome):
        return (
            check in self.breaks
            and (case.lasting or not self.lasting)
            and (not self.statuses or outcome.status in self.statuses)
            and (case.occurrence == 1 or not self.first)
            and re.fullmatch(self.faults, case.fault) is not None
            and re.fullmatch(self.scenarios, case.scenario.name) is not None
            and re.fullmatch(self.traced, case.scenario.traced) is not None
            and any(re.search(self.calls, line) for line in outcome.met)
        )


# What the trace says of a descriptor of the last volume, and of any.
LAST_VOLUME = r"\(\d+<[^>]*/dump/volume\.2>"
VOLUME = r"\(\d+<[^>]*/dump/volume\.\d>"

EXCEPTIONS = (
    Exception_(
        "loader",
        "The system's loader ends by SIGSEGV when it is refused its first memory. Nothing of the program has run.",
        breaks=("outcome",),
        statuses=(-11,),
        calls=r"mmap\(NULL, 8192,",
        first=True,
    ),
    Exception_(
        "no memory",
        "Where the system refuses every byte from the start on, the C++ runtime lacks the reserve that its exceptions "
        "need; later, the JSON library's destructor allocates, and may not fail. The process ends by SIGABRT, with the "
        "runtime's line on standard error.",
        breaks=("outcome",),
        faults="ENOMEM",
        calls=r"brk\(.*= 0 \(INJECTED\)",
        statuses=(-6,),
        lasting=True,
    ),
    Exception_(
        "append",
        "Signing does not look at what became of its one write, the append of the document: exit code 0, and no "
        "document or a part of one after the last volume. Verify after signing where the disk may be full.",
        breaks=("append",),
        calls="writev?" + LAST_VOLUME,
    ),
    Exception_(
        "read error",
        "A read error of a volume is not distinguished from its end: before the first byte of the last volume it ends the "
        "stream, so that the signature does not match, and the dump does not verify.",
        breaks=("append",),
        calls="read" + LAST_VOLUME,
    ),
    Exception_(
        "endless read",
        "A read error of a volume that lasts is tried again for ever.",
        breaks=("hang",),
        calls="read" + VOLUME,
        lasting=True,
    ),
    Exception_(
        "new pair",
        "A command that can't get the pair makes a new one and goes on, for whatever reason the helper has failed. "
        "The helper of `product/` keeps the old pair in its archive.",
        breaks=("pair replaced",),
    ),
    Exception_(
        "spawn",
        "The spawning layer closes nothing when it can't make a pipe or fork; the process ends with it.",
        breaks=("descriptor",),
        calls=r"(pipe2|clone)\(|fcntl\(.*F_SETFL",
    ),
    Exception_(
        "no child",
        "Waiting for the child is repeated while the system says that there is none.",
        breaks=("hang",),
        calls=r"wait4\(",
        faults="ECHILD",
        lasting=True,
    ),
    Exception_(
        "standard output",
        "What standard output refuses can't be reported there; exit code 1 is all that is left.",
        breaks=("outcome",),
        calls=r"write\(1<",
    ),
    Exception_(
        "dup2",
        "A failing dup2 in the child is no error: the helper then has the caller's own stream.",
        breaks=("secret", "outcome"),
        calls=r"dup2\(",
        traced="child",
    ),
    Exception_(
        "published",
        "The published public key is replaced in place, and its writing is not looked at. The helper's "
        "`--publish-backup-certificate` mends it.",
        breaks=("published",),
        calls=r"writev?\(\d+<[^>]*/bu_pubkey\.txt>",
    ),
    Exception_(
        "removal",
        "The helper's temporary file stays where the system refuses to remove it; the next writer does that.",
        breaks=("file",),
        calls=r"unlinkat\(.*pair\.pem\.(new|copy)",
        lasting=True,
    ),
    Exception_(
        "execution log",
        "The temporary file of an atomic save that fails is left, for whoever wants to see what it holds.",
        breaks=("file",),
        calls="write.*/migration\\.result",
        scenarios="record",
    ),
    Exception_(
        "profile",
        "A profile that can't be given to its group stays open, and unused, to the end of the process.",
        breaks=("descriptor",),
        calls=r"fchown\(\d+<[^>]*/profile\.log>",
    ),
)


def excuse(findings, case, outcome):
    """The names of the exceptions that cover all findings, or None if one is not covered."""
    names = []
    for check, _ in findings:
        row = next((row for row in EXCEPTIONS if row.excuses(check, case, outcome)), None)
        if row is None:
            return None
        names.append(row.name)
    return names


def untold():
    """The rows that the table in TABLE lacks or has otherwise, as it should have them."""
    told = TABLE.read_text().split("### Documented exceptions\n")[1].split("\n#")[0].splitlines()
    rows = [f"| {row.name} | {row.reason} |" for row in EXCEPTIONS]
    return sorted(set(rows) ^ {line for line in told if re.match(r"\| (?!Exception \|)", line)})
