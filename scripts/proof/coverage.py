"""Tells what the tests of the build with counters have reached. Called by scripts/coverage."""

import json
import sys
from collections import defaultdict
from dataclasses import dataclass, field
from pathlib import Path

NEEDED = 95.0


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


def main():
    report = json.loads(Path(sys.argv[1]).read_text())
    files, folders, total = defaultdict(Lines), defaultdict(Lines), Lines()
    for file in report["files"]:
        for line in file["lines"]:
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
