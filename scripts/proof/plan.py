"""The cases: every call on the road of every scenario, at every occurrence, with every error, and a kill at it."""

import zlib
from collections import Counter
from dataclasses import dataclass

import calls
import scenarios
import tracer

KILL = "KILL"
IDLE = ("futex", "getpid")  # a kill at the second of two in a row is a kill at the first
ALL_MEMORY = "memory"  # brk and mmap, from here on


@dataclass(frozen=True)
class Case:
    scenario: scenarios.Scenario
    call: str
    occurrence: int
    fault: str  # an error's name, KILL
    lasting: bool = False
    beside: int = 0  # for ALL_MEMORY: the next occurrence of mmap, where `occurrence` is that of brk

    @property
    def name(self):
        return f"{self.scenario.name} | {self.call}#{self.occurrence} {self.fault}{'+' if self.lasting else ''}"

    def rules(self):
        """What strace is to inject."""
        when = f"{self.occurrence}{'+' if self.lasting else ''}"
        if self.fault == KILL:
            return [f"{self.call}:signal={KILL}:when={when}"]
        if self.call == ALL_MEMORY:
            return [calls.rule("brk", "ENOMEM", when), calls.rule("mmap", "ENOMEM", f"{self.beside}+")]
        return [calls.rule(self.call, self.fault, when)]

    def traced_calls(self):
        return list(calls.MEMORY) if self.call == ALL_MEMORY else [self.call]

    def start(self, sandbox, is_known_hang):
        def give_up():
            met = tracer.met_calls(tracer.read_trace(sandbox.trace))
            return is_known_hang(tracer.Outcome(None, b"", b"", met=met))

        outcome = start(self.scenario, sandbox, self.traced_calls(), self.rules(), self.lasting, give_up)
        outcome.met = tracer.met_calls(outcome.trace)
        return outcome

    def relieve(self, sandbox):
        """Ends what the fault is made of, before the undisturbed run: nothing lasts beyond the process."""

    clear = relieve


def start(scenario, sandbox, traced_calls, rules=(), lasting=False, give_up=None):
    """Runs a scenario with these rules and returns its outcome, the trace included."""
    sandbox.trace.unlink(missing_ok=True)
    words = tracer.strace(sandbox.trace, traced_calls, rules, options(scenario))
    command = scenario.arguments(sandbox)
    if scenario.traced == "helper":
        pattern = "*" if lasting else scenario.helper_request
        sandbox.set_helper(f'case $1 in {pattern}) exec {quoted(words)} {sandbox.real_helper} "$@" ;; esac')
    else:
        sandbox.set_helper("")
        command = words + command
    outcome = tracer.run(command, scenario.env(sandbox), sandbox.root, scenario.stdin(sandbox), give_up)
    outcome.trace = tracer.read_trace(sandbox.trace)
    return outcome


def start_undisturbed(scenario, sandbox, before_exec=None):
    sandbox.set_helper("")
    return tracer.run(scenario.arguments(sandbox), scenario.env(sandbox), sandbox.root, scenario.stdin(sandbox),
                      before_exec=before_exec)


def options(scenario):
    # In append mode, because the helper may run more than once. -b: the child's road ends where the helper's begins.
    return {"child": ("-f", "-b", "execve"), "helper": ("-A",)}.get(scenario.traced, ())


def quoted(words):
    return " ".join(f"'{word}'" for word in words)


def road(scenario, sandbox):
    """The calls of an undisturbed run as (name, arguments, occurrence), and how many stand before main."""
    scenario.reset(sandbox)
    outcome = start(scenario, sandbox, [])
    found = [call for call in map(tracer.parse, outcome.trace) if call is not None]
    if not found:
        raise RuntimeError(f"nothing was traced of '{scenario.name}': {outcome.err.decode(errors='replace')}")
    if scenario.traced == "child":
        first = found[0][0]
        child = next(pid for pid, _, _ in found if pid != first)
        found = [call for call in found if call[0] == child]
    seen = Counter()
    points = []
    for _, name, arguments in found:
        seen[name] += 1
        points.append((name, arguments, seen[name]))
    # The loader ends by giving its cache of library names back.
    before_main = next((at for at, point in enumerate(points) if point[0] == "munmap"), 0)
    return points, 0 if scenario.traced == "child" else before_main


def cases_of(scenario, sandbox):
    points, before_main = road(scenario, sandbox)
    cases = []
    for at, (call, arguments, occurrence) in enumerate(points):
        if call == "execve" or (at < before_main and not scenario.loader):
            continue
        # In a child of the tool the calls are counted from the fork, but the tool is traced as well: only those
        # that it doesn't make itself can be killed at without killing the tool first.
        repeated = call in IDLE and at > 0 and points[at - 1][0] == call
        if not repeated and (scenario.traced != "child" or call in ("dup2", "close_range")):
            cases.append(Case(scenario, call, occurrence, KILL))
        cases += [Case(scenario, call, occurrence, error) for error in calls.errors_of(call, arguments)]
        if at >= before_main:
            cases += lasting_cases(scenario, points, at)
    return cases


def lasting_cases(scenario, points, at):
    call, arguments, occurrence = points[at]
    if call not in calls.MEMORY:
        error = calls.lasting_error_of(call, arguments)
        return [Case(scenario, call, occurrence, error, True)] if error else []
    if scenario.traced == "child":
        return []
    brks = sum(name == "brk" for name, _, _ in points[:at])
    maps = sum(name == "mmap" for name, _, _ in points[:at])
    return [Case(scenario, ALL_MEMORY, brks + 1, "ENOMEM", True, maps + 1)]


def place(case):
    """A number that stays the case's own: some cases come and go with the timing of a run."""
    return zlib.crc32(case.name.encode())


def in_fixed_order(cases):
    """Mixed, but always in the same way."""
    return sorted(cases, key=lambda case: (place(case), case.name))
