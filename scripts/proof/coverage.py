"""Tells what the tests of the build with counters have reached. Called by scripts/coverage."""

import json
import sys
from collections import defaultdict
from dataclasses import dataclass, field
from pathlib import Path

NEEDED = 95.0

# What no test can reach or count, and why: the first lines of functions and statements, each with all that it holds.
UNREACHED = {
    ("lib/process/lib/identity.cpp", "void p_setuid_core("):
        "counted by a child that has lost the right to write the counts",
    ("dumpsig/attendant.cpp", "void Attendant::dieOf("):
        "the process dies of the signal",
    ("lib/runtime/bsa_conf_load.cpp", "if (conf->entries == nullptr) {\n        conf->capacity"):
        "no memory",
    ("lib/runtime/bsa_conf_load.cpp", "if (grown == nullptr) {"):
        "no memory",
    ("commons/xml/xpath_expr.cpp", "if (set == nullptr) {"):
        "no memory",
    ("lib/process/lib/fork_exec.cpp", "if (oldFd == -1) {\n            throwSystemError"):
        "/dev/null can't be opened",
    ("lib/process/lib/spawn.cpp", "if (pipe(ends) != 0) {"):
        "fatal: the process ends without a pipe; scripts/faults tries it",
    ("commons/run/error_report.cpp", "} catch (const Error<&ParamError>&) {"):
        "looking for one fixed file asks for no parameter; part of the interface",
}


@dataclass
class Lines:
    count: int = 0
    missing: list = field(default_factory=list)

    def add(self, line):
        if not line["gcovr/noncode"]:
            self.count += 1
            if line["count"] == 0:
                self.missing.append(line["line_number"])

    def percent(self):
        return 100 * (1 - len(self.missing) / self.count) if self.count else 100.0


def ranges(numbers):
    """1, 2, 3, 7 as "1-3 7"."""
    runs = []
    for number in sorted(numbers):
        if runs and runs[-1][1] == number - 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    return " ".join(str(first) if first == last else f"{first}-{last}" for first, last in runs)


def unreached(repo):
    """(file, line) of everything that UNREACHED names."""
    result = set()
    for name, begin in UNREACHED:
        text = (repo / name).read_text()
        if text.count(begin) != 1:
            sys.exit(f"coverage: {name} has no single '{begin}'")
        at = text.index(begin)
        indent = text[text.rindex("\n", 0, at) + 1:at]
        end = text.index(f"\n{indent}}}", at)
        result.update((name, number) for number in range(text.count("\n", 0, at) + 1, text.count("\n", 0, end) + 2))
    return result


def main():
    report = json.loads(Path(sys.argv[1]).read_text())
    left_out = unreached(Path(__file__).parents[2])
    files, folders, total = defaultdict(Lines), defaultdict(Lines), Lines()
    for file in report["files"]:
        for line in file["lines"]:
            if (file["file"], line["line_number"]) in left_out:
                continue
            for lines in (files[file["file"]], folders[str(Path(file["file"]).parent)], total):
                lines.add(line)

    for name, lines in sorted(folders.items()):
        print(f"{name:32}{lines.count:8} lines{lines.percent():8.1f}%")
    print()
    worst = sorted(files.items(), key=lambda item: -len(item[1].missing))[:int(sys.argv[2])]
    for name, lines in worst:
        if lines.missing:
            print(f"{name}: {ranges(lines.missing)}")
    print(f"coverage: {total.percent():.1f}% of lines")
    sys.exit(total.percent() < NEEDED)


if __name__ == "__main__":
    main()
