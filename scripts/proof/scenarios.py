"""The commands that the faults are tried on."""

from dataclasses import dataclass

from sandbox import ARCHIVED

SET = "--set-backup-certificate"
GET = "--get-backup-certificate"
LIST = "--list-backup-certificates"
RESTORE = "--restore-backup-certificate"
PUBLISH = "--publish-backup-certificate"
REPLACING = ("generate", SET, RESTORE)  # commands whose purpose is another pair


@dataclass(frozen=True)
class Scenario:
    name: str
    # sign, verify, generate or get of the tool; record, a program with an execution log; what the helper is asked for
    command: str
    traced: str = "tool"  # whose calls fail: tool, child (between its fork and exec), helper (of a tool), itself
    session: bool = False  # with a session directory, a custom log and a profile
    stored: bool = True  # the helper has a pair
    dump: str = "contents"  # contents, signed or changed: what the volumes hold
    loader: bool = False  # also the calls before main
    disks_only: bool = False  # only on full disks

    @property
    def of_helper(self):
        return self.command.startswith("--")

    @property
    def of_tool(self):
        return not self.of_helper and self.command != "record"

    @property
    def helper_request(self):
        """Which of the helper's runs is disturbed where it is the helper's calls that fail."""
        return SET if self.command == "generate" or not self.stored else GET

    def arguments(self, sandbox):
        if self.of_helper:
            return [str(sandbox.real_helper), self.command] + ([ARCHIVED] if self.command == RESTORE else [])
        if self.command == "record":
            return [str(sandbox.build.folder / "bin/record_run"), str(sandbox.session)]
        words = [str(sandbox.build.tool)]
        if self.session:
            words.append(f"--session-path={sandbox.session}")
        volumes = [str(volume) for volume in sandbox.volumes]
        return words + {
            "sign": ["--sign-dump", *volumes],
            "verify": ["--verify-dump", *volumes],
            "generate": ["--generate"],
            "get": ["--get-certificate"],
        }[self.command]

    def stdin(self, sandbox):
        return sandbox.other_pair_text if self.command == SET else b""

    def env(self, sandbox):
        if not self.session:
            return sandbox.env
        return {**sandbox.env, "CUSTOM_LOG": str(sandbox.custom / "custom.log")}

    def reset(self, sandbox):
        sandbox.reset(getattr(sandbox, self.dump), self.stored, archived=self.command in (LIST, RESTORE))


SCENARIOS = (
    # The road before main is the same for every command, so it is tried with one command of each program.
    Scenario("sign", "sign", loader=True),
    Scenario("sign, session", "sign", session=True),
    Scenario("sign, no pair", "sign", session=True, stored=False),
    Scenario("sign, signed before", "sign", dump="signed"),
    Scenario("verify", "verify", dump="signed"),
    Scenario("verify, session", "verify", session=True, dump="signed"),
    Scenario("verify, changed", "verify", dump="changed"),
    Scenario("generate", "generate"),
    Scenario("generate, session", "generate", session=True),
    Scenario("get", "get"),
    Scenario("get, session", "get", session=True),
    Scenario("sign: child", "sign", traced="child", session=True),
    Scenario("generate: child", "generate", traced="child"),
    Scenario("sign: helper", "sign", traced="helper", session=True),
    Scenario("verify: helper", "verify", traced="helper", session=True, dump="signed"),
    Scenario("get: helper", "get", traced="helper"),
    Scenario("generate: helper", "generate", traced="helper", session=True),
    Scenario("sign, no pair: helper", "sign", traced="helper", stored=False),
    Scenario("helper: get", GET, traced="itself", loader=True),
    Scenario("helper: set", SET, traced="itself"),
    Scenario("helper: first set", SET, traced="itself", stored=False),
    Scenario("helper: list", LIST, traced="itself"),
    Scenario("helper: restore", RESTORE, traced="itself"),
    Scenario("helper: publish", PUBLISH, traced="itself"),
    Scenario("record", "record", traced="itself", session=True, disks_only=True),
)
