"""Runs commands in turn, and holds what each takes against what the first one takes."""

import os
import statistics
import time
from collections.abc import Callable
from dataclasses import dataclass, field

ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LC_ALL": "C"}


@dataclass(frozen=True)
class Command:
    name: str
    argv: tuple
    after: Callable = lambda: None  # puts back what the command has changed, outside its time
    env: dict = field(default_factory=dict)
    code: int = 0  # what it ends with


@dataclass(frozen=True)
class Usage:
    """What a command took: milliseconds, and pages that were not there at once."""

    wall: float
    processor: float  # of its children too
    faults: int = 0


@dataclass(frozen=True)
class Spread:
    """Of the rounds: the middle one, the least, the most."""

    median: float
    least: float
    most: float

    @staticmethod
    def of(values):
        values = list(values)
        return Spread(statistics.median(values), min(values), max(values))

    def text(self, digits):
        return f"{self.median:.{digits}f} ({self.least:.{digits}f}..{self.most:.{digits}f})"


@dataclass(frozen=True)
class Comparison:
    title: str
    commands: list  # the first is what the others are held against
    rounds: int
    runs: int = 1  # of each command in a round


class Result:
    """The rounds of a comparison, by the commands' names; a round is the mean of its runs."""

    def __init__(self, comparison, rounds):
        self.comparison = comparison
        self.rounds = rounds

    def spread(self, name, unit):
        return Spread.of(getattr(usage, unit) for usage in self.rounds[name])

    def ratio(self, name, base, unit):
        return Spread.of(getattr(a, unit) / getattr(b, unit) for a, b in zip(self.rounds[name], self.rounds[base]))

    def difference(self, name, base, unit):
        return Spread.of(getattr(a, unit) - getattr(b, unit) for a, b in zip(self.rounds[name], self.rounds[base]))


def run(command):
    """Runs a command, which must end as it should, to its end."""
    streams = [(os.POSIX_SPAWN_OPEN, stream, "/dev/null", os.O_RDWR, 0) for stream in (0, 1, 2)]
    begin = time.perf_counter()
    pid = os.posix_spawnp(command.argv[0], command.argv, ENVIRONMENT | command.env, file_actions=streams)
    _, status, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - begin
    if status != command.code << 8:
        raise SystemExit(f"bench: failed: {' '.join(map(str, command.argv))}")
    command.after()
    return Usage(wall * 1000, (usage.ru_utime + usage.ru_stime) * 1000, usage.ru_minflt)


def mean(usages):
    return Usage(*(statistics.fmean(getattr(usage, unit) for usage in usages) for unit in ("wall", "processor", "faults")))


def compare(comparison):
    """A B A B …, round after round. One round before them, for the caches, is not counted."""
    rounds = {command.name: [] for command in comparison.commands}
    for number in range(comparison.rounds + 1):
        usages = {name: [] for name in rounds}
        for _ in range(comparison.runs if number > 0 else 1):
            for command in comparison.commands:
                usages[command.name].append(run(command))
        if number > 0:
            for name, taken in usages.items():
                rounds[name].append(mean(taken))
    return Result(comparison, rounds)


def milliseconds(spread):
    return spread.text(1 if spread.median < 100 else 0)


def table(results):
    """All comparisons as one table."""
    lines = ["| | Wall time, ms | of the first | Processor time, ms | of the first |", "|---|---|---|---|---|"]
    for result in results:
        first = result.comparison.commands[0].name
        lines.append(f"| **{result.comparison.title}** | | | | |")
        for name in result.rounds:
            cells = [name]
            for unit in ("wall", "processor"):
                cells += [milliseconds(result.spread(name, unit)),
                          "1" if name == first else result.ratio(name, first, unit).text(2)]
            lines.append(f"| {' | '.join(cells)} |")
    return "\n".join(lines)
