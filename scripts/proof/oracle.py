"""What every run has to have left, whatever happened to it."""

import re
import signal
import stat
from pathlib import Path

import keys
import plan
import scenarios
import tracer

MESSAGES = Path(__file__).parents[2] / "docs/messages.md"
# A row for whatever else there may be: here it would let everything pass.
CATCH_ALL = "Error: …"


def documented_lines():
    """What the tool may print where it ends with exit code 1: the first columns of the tables of messages."""
    rows = re.findall(r"^\| (`.*?)(?<!\\) \| ", MESSAGES.read_text().split("\n## The log")[0], re.M)
    texts = [text for row in rows for text in re.findall("`([^`]+)`", row) if text[0] != ":" and text != CATCH_ALL]
    patterns = [re.escape(text).replace("…", ".*") + "(: .*)?" for text in texts]
    return re.compile(("(" + "|".join(patterns) + ")\n").encode(), re.S)


TOOL_LINES = documented_lines()
# The spawning layer ends the process through both streams.
SPAWN_LINES = re.compile(rb"backup_sign: forkExecv\w+: \w+\(.*\) failed.*\nSystem error \d+: .*\n", re.S)
HELPER_LINES = re.compile(rb"[^\n]+\n")
LOADER_LINES = re.compile(rb".*(error while loading shared libraries|cannot |relocation error).*", re.S)

SIGNALS = {plan.KILL: signal.SIGKILL, "SIGXFSZ": signal.SIGXFSZ}
LOG_FILES = {"session": {"migration.log", "migration.result"}, "custom": {"custom.log", "profile.log"}, "tmp": set()}
ARCHIVED = re.compile(r"pair\.pem\.\d{8}T\d{6}\.\d{6}Z")
REPORT = re.compile(r"\.lock|report-\d{8}T\d{6}\.\d{9}\.xml")
# A killed writer's files wait for the next one, which removes them under the lock.
UNFINISHED = ("pair.pem.new", "pair.pem.copy", "bu_pubkey.txt.new")


class Check:
    """One case's findings: a list of (what is broken, how)."""

    def __init__(self, case, outcome, sandbox):
        self.case = case
        self.scenario = case.scenario
        self.outcome = outcome
        self.sandbox = sandbox
        self.findings = []
        self.pair_before = sandbox.pair_text if self.scenario.stored else None
        self.pair_after = read(sandbox.pair_file)

    def add(self, check, detail):
        self.findings.append((check, detail))

    def run(self):
        self.check_end()
        self.check_descriptors()
        self.check_pair()
        self.check_dump()
        self.check_result()
        self.check_execution_log()
        self.check_files()
        self.check_secrets()
        self.check_second_run()
        return self.findings

    # How the process ended

    @property
    def killed(self):
        """Whether the process that was started is the one that the signal was sent to, and died of it."""
        sent = SIGNALS.get(self.case.fault)
        return sent is not None and self.outcome.status == -sent and self.scenario.traced in ("tool", "itself")

    @property
    def succeeded(self):
        return self.outcome.status == 0 and not self.outcome.hung

    def check_end(self):
        outcome = self.outcome
        if outcome.hung:
            self.add("hang", "no end")
        elif not self.killed:
            if outcome.orphans:
                self.add("process", f"{outcome.orphans} not waited for")
            if not self.is_documented_end():
                self.add("outcome", f"status {outcome.status}, output {outcome.out!r}, error {outcome.err!r}")

    def is_documented_end(self):
        status, out, err = self.outcome.status, self.outcome.out, self.outcome.err
        if status == 127:
            return out == b"" and LOADER_LINES.fullmatch(err) is not None
        if status == 1 and SPAWN_LINES.fullmatch(out):
            return out == err
        if err != b"" or status not in (0, 1):
            return False
        if self.scenario.of_helper:
            return status == 0 or HELPER_LINES.fullmatch(out) is not None
        if self.scenario.of_tool:
            return TOOL_LINES.fullmatch(out) is not None if status == 1 else out == b"" or self.scenario.command == "get"
        return out != b""

    def check_descriptors(self):
        if self.scenario.traced == "child" or self.killed:
            return
        left = tracer.open_descriptors(self.outcome.trace)
        if left:
            self.add("descriptor", f"left open: {left}")

    # The key pair

    def check_pair(self):
        if self.pair_after is None:
            if self.pair_before is not None:
                self.add("pair", "none is stored any more")
            return
        kept = [self.pair_after] + [read(path) for path in self.archive()]
        for text in kept:
            if keys.pair_of(text) is None:
                self.add("pair", f"not whole: {text[:80]!r}")
        if self.pair_before not in (None, *kept):
            self.add("pair lost", "the pair that was there is neither current nor archived")
        if self.pair_replaced and self.scenario.command not in scenarios.REPLACING:
            self.add("pair replaced", "by a command that needs a key and could not get it")

    def archive(self):
        return [path for path in self.sandbox.store.iterdir() if ARCHIVED.fullmatch(path.name)]

    @property
    def pair_replaced(self):
        return self.pair_before is not None and self.pair_after != self.pair_before

    # The dump

    def check_dump(self):
        before, after = self.sandbox.dump_before, self.sandbox.read_dump()
        if after[:-1] != before[:-1] or not after[-1].startswith(before[-1]):
            self.add("dump", "a volume has changed in front of the document")
            return
        tail = after[-1][len(before[-1]) :]
        if tail and self.scenario.command != "sign":
            self.add("dump", "something was appended")
        elif tail and not (tail.startswith(keys.MARKER) and tail.endswith(keys.DOCUMENT_END)):
            self.add("append", f"{len(tail)} bytes of a document")

    def verifies(self):
        pair = keys.pair_of(read(self.sandbox.pair_file))
        return pair is not None and keys.verifies(self.sandbox.read_dump(), pair)

    # What exit code 0 claims

    def check_result(self):
        if not self.succeeded:
            return
        command, out = self.scenario.command, self.outcome.out
        if command == "sign" and not self.verifies():
            self.add("append", "exit code 0, but the dump does not verify")
        if command == "verify" and self.scenario.dump == "changed":
            self.add("verified", "a changed dump was found good")
        if command == "verify" and not self.verifies():
            self.add("verified", "the dump was found good with another pair")
        if command in ("get", scenarios.GET) and keys_of(out) != keys_of(self.pair_after):
            self.add("result", f"not the stored pair: {out[:80]!r}")
        if command == scenarios.SET and self.pair_after != self.sandbox.other_pair_text:
            self.add("result", "the pair was not stored")
        if command in ("generate", scenarios.RESTORE) and self.pair_after == self.pair_before:
            self.add("result", "no other pair is stored")
        if command in ("generate", scenarios.RESTORE, scenarios.PUBLISH):
            self.check_published()
        if command == "record" and (read(self.sandbox.session / "migration.result") or b"") not in out:
            self.add("result", "not the document that was printed")

    def check_execution_log(self):
        """Whatever happens, it is a whole document, if it is there."""
        text = read(self.sandbox.session / "migration.result")
        if text is not None and not text.rstrip().endswith(b"</execution-result>"):
            self.add("execution log", f"cut off: {text[-80:]!r}")

    def check_published(self):
        pair = keys.pair_of(self.pair_after)
        if pair is not None and pair.public_text not in read(self.sandbox.published):
            self.add("published", f"not the current public key: {read(self.sandbox.published)!r}")

    # What lies about

    def check_files(self):
        for path in self.sandbox.files():
            if not self.is_expected(path):
                self.add("file", str(path))
            elif path.parent == self.sandbox.store and stat.S_IMODE(path.stat().st_mode) != 0o600:
                self.add("pair", f"mode of {path.name}: {stat.S_IMODE(path.stat().st_mode):o}")

    def is_expected(self, path):
        sandbox = self.sandbox
        if path.name in UNFINISHED and path.parent in (sandbox.store, sandbox.published.parent):
            return self.case.fault in SIGNALS
        if path.parent == sandbox.store:
            return path.name in ("pair.pem", "lock") or ARCHIVED.fullmatch(path.name)
        if path.parent == sandbox.var / "error-reports":
            return REPORT.fullmatch(path.name)
        if path.parent in (sandbox.session, sandbox.custom, sandbox.temp):
            return path.name in LOG_FILES[path.parent.name]
        return path in (*sandbox.volumes, sandbox.published, sandbox.product / "BMM/log4cpp.properties")

    def check_secrets(self):
        asked_for = self.scenario.command in ("get", scenarios.GET)
        places = {"standard error": self.outcome.err}
        if not asked_for or not (self.succeeded or self.killed):
            places["standard output"] = self.outcome.out
        for path in self.sandbox.files():
            if path.parent != self.sandbox.store:
                places[path.name] = read(path)
        secrets = [b"PRIVATE KEY", *self.sandbox.pair.secrets, *self.sandbox.other_pair.secrets]
        for place, text in places.items():
            if path_is_small(text) and any(secret in text for secret in secrets):
                self.add("secret", f"in {place}")

    # The next run

    def check_second_run(self):
        self.case.relieve(self.sandbox)
        outcome = plan.start_undisturbed(self.scenario, self.sandbox)
        command = self.scenario.command
        # A dump that was signed with a pair that was since replaced no longer verifies.
        expected = int(self.scenario.dump == "changed" or (command == "verify" and self.pair_replaced))
        good = outcome.status == expected and outcome.err == b""
        if command == "sign":
            good = good and self.verifies()
        elif command == "get":
            good = good and keys_of(outcome.out) == keys_of(read(self.sandbox.pair_file))
        if not good:
            self.add("second run", f"status {outcome.status}, output {outcome.out!r}, error {outcome.err!r}")
        for path in self.sandbox.files():
            if path.name in UNFINISHED and command in scenarios.REPLACING:
                self.add("second run", f"{path.name} is still there")


def read(path):
    return path.read_bytes() if path.exists() else None


def path_is_small(text):
    """Volumes are random bytes of megabytes: a key can't be in them unless it was written there."""
    return len(text) < 60000


def keys_of(text):
    """The two PEM blocks of a text, however they are separated."""
    return keys.PEM.findall(text or b"")
