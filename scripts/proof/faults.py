"""Tries every fault at every system call of the tool and its helper, and full disks. Called by scripts/faults."""

import argparse
import os
import re
import sys
from collections import Counter, defaultdict

import disks
import documented
import plan
import worker
from oracle import Check
from scenarios import SCENARIOS

LEAST_CASES = 5000
QUICK_STRIDE = 10
PROGRESS = 500  # cases from one line about it to the next
TRIES = 3  # of a case whose call doesn't come: how often some are made depends on timing


def cases_of(scenario):
    cases = [] if scenario.disks_only else plan.cases_of(scenario, worker.sandbox)
    return cases + disks.cases_of(scenario, worker.sandbox)


def try_case(case):
    """(case, findings, names of the exceptions that cover them or None, the calls that were met)"""
    sandbox = worker.sandbox
    for _ in range(TRIES):
        case.scenario.reset(sandbox)
        outcome = case.start(sandbox, lambda so_far: documented.excuse([("hang", "")], case, so_far) is not None)
        try:
            findings = Check(case, outcome, sandbox).run()
        finally:
            case.clear(sandbox)
        if outcome.met or findings:
            break
    return case, findings, documented.excuse(findings, case, outcome), outcome.met


class Report:
    """Counts the cases by call and by exception, and prints failures as they come."""

    def __init__(self):
        self.by_call = defaultdict(Counter)
        self.by_exception = Counter()
        self.unmet = 0

    def take(self, case, findings, exceptions, met):
        if not met and not findings:
            self.unmet += 1
            return
        verdict = "passed" if not findings else "failures" if exceptions is None else "documented"
        self.by_call[case.call][verdict] += 1
        self.by_exception.update(set(exceptions or ()))
        if verdict == "failures":
            print(f"FAILURE {case.name}", *(f"  {check}: {detail}" for check, detail in findings),
                  *(f"  met: {line}" for line in met[:3]), sep="\n", flush=True)

    def total(self, verdict=None):
        return sum(counts[verdict] if verdict else counts.total() for counts in self.by_call.values())

    def print(self):
        print(f"\n{'call':16}{'cases':>8}{'passed':>8}{'documented':>12}{'failures':>10}")
        for call, counts in sorted(self.by_call.items()):
            print(f"{call:16}{counts.total():8}{counts['passed']:8}{counts['documented']:12}{counts['failures']:10}")
        print("\ndocumented exceptions")
        for row in documented.EXCEPTIONS:
            print(f"{self.by_exception[row.name]:8}  {row.name}: {row.reason}")
        if self.unmet:
            print(f"\n{self.unmet} more cases are not counted: no run came by their call.")
        print(f"faults: {self.total()} cases, {self.total('passed')} passed, {self.total('documented')} documented, "
              f"{self.total('failures')} failures")


def main():
    parser = argparse.ArgumentParser(prog="faults")
    parser.add_argument("--build", required=True)
    parser.add_argument("--quick", action="store_true", help="every tenth case")
    parser.add_argument("--only", default="", help="the cases whose name matches this pattern")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="cases that are tried at once")
    args = parser.parse_args()
    if documented.untold():
        sys.exit("\n".join([f"faults: {documented.TABLE} and documented.py differ in", *documented.untold()]))

    report = Report()
    with worker.workers(args.build, args.jobs) as pool:
        cases = [case for found in pool.map(cases_of, SCENARIOS) for case in found]
        cases = [case for case in plan.in_fixed_order(cases) if re.search(args.only, case.name)]
        if args.quick:
            cases = [case for case in cases if plan.place(case) % QUICK_STRIDE == 0]
        print(f"faults: {len(cases)} cases", flush=True)
        for number, result in enumerate(pool.map(try_case, cases, chunksize=4), 1):
            report.take(*result)
            if number % PROGRESS == 0:
                print(f"{number} tried", flush=True)
    report.print()
    whole = not args.quick and not args.only
    sys.exit(report.total("failures") > 0 or (whole and report.total() < LEAST_CASES))


if __name__ == "__main__":
    main()
