"""What scripts/bench calls."""

import argparse
import os
import subprocess
import sys
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

import comparisons
import document
import growth
import measure
import system_calls
import targets
from site_under_test import Site

REPOSITORY = Path(__file__).resolve().parent.parent
DOCUMENT = REPOSITORY / "docs/performance.md"
NO_BUDGETS = 77  # what bench/instructions ends with where there is nothing to hold the counts against


@dataclass(frozen=True)
class Part:
    measure: Callable  # of a Site
    table: Callable  # of what came of it


def instructions(_):
    """What bench/instructions prints."""
    done = subprocess.run([REPOSITORY / "bench/instructions"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          check=False)
    if done.returncode not in (0, NO_BUDGETS):
        raise SystemExit(done.stderr)
    return done.stdout.strip()


PARTS = {
    **{name: Part(comparison, lambda result: measure.table([result])) for name, comparison in comparisons.COMPARISONS.items()},
    "memory": Part(comparisons.memory, lambda found: comparisons.memory_table(*found)),
    "size": Part(growth.by_size, growth.fits_table),
    "library": Part(growth.parts, growth.parts_table),
    "calls": Part(system_calls.trace, lambda found: system_calls.table(*found)),
    "instructions": Part(instructions, lambda lines: f"```\n{lines}\n```"),
}


def target_table(found):
    return targets.table([*targets.program_targets(found), targets.memory_target(found["memory"][0]),
                          *targets.parts_targets(growth.milliseconds_by_run(found["library"]))])


def write(found, load):
    """Renews the figures of the document, and its picture."""
    sections = {name: PARTS[name].table(found[name]) for name in ("memory", "size", "library", "calls", "instructions")}
    sections["machine"] = document.machine(load)
    sections["targets"] = target_table(found)
    sections["comparisons"] = measure.table([found[name] for name in comparisons.COMPARISONS])
    text = DOCUMENT.read_text()
    for name, content in sections.items():
        text = document.replace_section(text, name, content)
    DOCUMENT.write_text(text)
    DOCUMENT.with_suffix(".dat").write_text(growth.plot_data(found["size"]))
    subprocess.run([REPOSITORY / "scripts/draw"], check=True, stdout=subprocess.DEVNULL)


def main():
    parser = argparse.ArgumentParser(prog="bench", description="Measures the programs and the library.")
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--quick", action="store_true", help="little of everything, to see that it works")
    parser.add_argument("--write", action="store_true", help="renew the figures of docs/performance.md")
    parser.add_argument("name", nargs="?", choices=PARTS, metavar="NAME", help=f"one of: {', '.join(PARTS)}")
    args = parser.parse_args()
    if args.write and args.name:
        parser.error("the document is written from a whole run")

    load = os.getloadavg()[0]
    found = {}
    with Site(args.build, args.quick) as site:
        for name in [args.name] if args.name else PARTS:
            print(f"\n{name}\n", flush=True)
            found[name] = PARTS[name].measure(site)
            print(PARTS[name].table(found[name]), flush=True)
    if not args.name:
        print("\n" + target_table(found))
    if args.write:
        write(found, load)


if __name__ == "__main__":
    sys.exit(main())
