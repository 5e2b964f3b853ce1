"""More than a server will ask of the tool. Called by scripts/load."""

import argparse
import hashlib
import json
import os
import re
import resource
import subprocess
import sys
import time
from dataclasses import dataclass, field

import keys
import worker

MIB = 1 << 20
LOG_LINE = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[\d+\] INFO +backup_sign (started : .+|finished\. Exit code: 0)")


@dataclass
class Findings:
    """What a check saw: figures to print, and what is wrong."""

    figures: list = field(default_factory=list)
    faults: list = field(default_factory=list)

    def expect(self, condition, fault):
        if not condition:
            self.faults.append(fault)


@dataclass
class Run:
    status: int
    out: bytes
    seconds: float
    peak: int  # bytes, of the largest process


def run(arguments, env=None, descriptors=64):
    """Runs the tool under a limit of open descriptors, in itself and in the helper."""
    sandbox = worker.sandbox
    peak = sandbox.root / "peak"
    # A process's peak begins with that of the process it was forked from, and this one is larger than the tool.
    command = ["time", "--quiet", "--format=%M", f"--output={peak}", sandbox.build.tool, *arguments]
    begin = time.monotonic()
    ended = subprocess.run(command, env={**sandbox.env, **(env or {})}, cwd=sandbox.root, stdout=subprocess.PIPE,
                           stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, check=False,
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors)))
    return Run(ended.returncode, ended.stdout, time.monotonic() - begin, int(peak.read_text()) * 1024)


def timed(findings, name, run, most_memory):
    findings.figures.append(f"{name} {run.seconds:.1f} s, {run.peak / MIB:.0f} MiB")
    findings.expect(run.peak <= most_memory, f"{name}: more than {most_memory / MIB:.0f} MiB")
    return run


def silent(run):
    return run.status == 0 and run.out == b""


def session_env(sandbox):
    return {"CUSTOM_LOG": str(sandbox.custom / "custom.log")}


def profile_records(sandbox):
    """The records of the profile, each of which must be a whole line of JSON."""
    return [json.loads(line) for line in (sandbox.custom / "profile.log").read_text().splitlines()]


def check_profile(findings, sandbox, runs):
    records = profile_records(sandbox)
    starts = sum("start" in record for record in records)
    finishes = sum("finish" in record for record in records)
    findings.figures.append(f"{len(records)} records")
    findings.expect(starts == finishes == runs, f"{starts} start and {finishes} finish records of {runs} runs")


def many_volumes():
    """10,000 volumes"""
    sandbox, findings = worker.sandbox, Findings()
    contents = [os.urandom(600) for _ in range(10000)]
    volumes = [sandbox.temp / str(number) for number in range(len(contents))]
    for volume, content in zip(volumes, contents):
        volume.write_bytes(content)
    options = [f"--session-path={sandbox.session}"]

    signed = timed(findings, "sign", run([*options, "--sign-dump", *volumes], session_env(sandbox), 24), 24 * MIB)
    findings.expect(silent(signed), f"signing: {signed.out[:200]!r}")
    now = [volume.read_bytes() for volume in volumes]
    findings.expect(now[:-1] == contents[:-1] and now[-1].startswith(contents[-1]), "a volume has changed")
    findings.expect(keys.verifies(now, sandbox.pair), "the signature does not match the volumes")
    verified = timed(findings, "verify", run(["--verify-dump", *volumes], descriptors=24), 24 * MIB)
    findings.expect(silent(verified), f"verifying: {verified.out[:200]!r}")
    volumes[4998], volumes[4999] = volumes[4999], volumes[4998]
    findings.expect(run(["--verify-dump", *volumes]).out == b"Digest is wrong\n", "swapped volumes were not seen")
    check_profile(findings, sandbox, 1)
    return findings


def huge_dump():
    """16 GiB, sparse"""
    sandbox, findings = worker.sandbox, Findings()
    size, block = 16 << 30, bytes(MIB)
    path = sandbox.temp / "dump"
    with open(path, "wb") as dump:
        dump.truncate(size)

    signed = timed(findings, "sign", run(["--sign-dump", path], descriptors=24), 16 * MIB)
    findings.expect(silent(signed), f"signing: {signed.out!r}")
    digest = hashlib.sha1()
    for _ in range(size // len(block)):
        digest.update(block)
    with open(path, "rb") as dump:
        dump.seek(size)
        findings.expect(keys.element(dump.read(), b"DigestValue") == digest.digest(), "not the digest of 16 GiB of zeros")
    verified = timed(findings, "verify", run(["--verify-dump", path], descriptors=24), 16 * MIB)
    findings.expect(silent(verified), f"verifying: {verified.out!r}")
    with open(path, "r+b") as dump:
        dump.seek(size - 5000)
        dump.write(b"x")
    findings.expect(run(["--verify-dump", path]).out == b"Digest is wrong\n", "a changed byte was not seen")
    return findings


def shared_profile():
    """64 processes on one profile.log"""
    sandbox, findings = worker.sandbox, Findings()
    sandbox.write_dump(sandbox.signed)
    repeated = 'for i in 1 2 3 4 5 6 7 8 9 10; do "$@" || exit 1; done'
    command = ["sh", "-c", repeated, "sh", sandbox.build.tool, "--verify-dump", *sandbox.volumes]
    failed = at_once(findings, [command] * 64, {**sandbox.env, **session_env(sandbox)})
    findings.expect(failed == 0, f"{failed} processes failed")
    check_profile(findings, sandbox, 640)
    return findings


def at_once(findings, commands, env):
    """Starts all commands together and returns how many did not end with exit code 0."""
    begin = time.monotonic()
    processes = [subprocess.Popen(command, env=env, cwd=worker.sandbox.root, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL) for command in commands]
    failed = sum(process.wait() != 0 for process in processes)
    findings.figures.append(f"{len(commands)} at once {time.monotonic() - begin:.1f} s")
    return failed


def talkative_helper():
    """a helper that answers with 64 MiB"""
    sandbox, findings = worker.sandbox, Findings()
    much = "head -c 67108864 /dev/zero | tr '\\0' x"
    answers = {
        "after the pair": (f'[ $1 != --get-backup-certificate ] || {{ {sandbox.real_helper} "$@"; {much}; exit 0; }}', False),
        "without a pair": (f"[ $1 != --get-backup-certificate ] || {{ {much}; exit 0; }}", True),
        "and fails": (f"[ $1 != --get-backup-certificate ] || {{ {much}; exit 1; }}", True),
    }
    for name, (script, replaced) in answers.items():
        sandbox.reset(sandbox.contents, stored=True)
        sandbox.set_helper(script)
        signed = timed(findings, name, run([f"--session-path={sandbox.session}", "--sign-dump", *sandbox.volumes]), 1024 * MIB)
        pair_text = sandbox.pair_file.read_bytes()
        findings.expect(silent(signed), f"{name}: {signed.out[:200]!r}")
        findings.expect(keys.verifies(sandbox.read_dump(), keys.Pair(pair_text)), f"{name}: the dump does not verify")
        findings.expect((pair_text != sandbox.pair_text) == replaced, f"{name}: the stored pair")
    return findings


def one_session():
    """200 runs at once in one session directory"""
    return sessions(lambda number: worker.sandbox.session)


def own_sessions():
    """200 runs at once in 200 session directories"""
    return sessions(lambda number: worker.sandbox.temp / f"session.{number}")


def sessions(session_of):
    sandbox, findings = worker.sandbox, Findings()
    content = os.urandom(100000)
    runs = [(session_of(number), sandbox.custom / f"dump.{number}") for number in range(200)]
    for _, dump in runs:
        dump.write_bytes(content)
    commands = [[sandbox.build.tool, f"--session-path={session}", "--sign-dump", dump] for session, dump in runs]
    failed = at_once(findings, commands, {**sandbox.env, **session_env(sandbox)})
    findings.expect(failed == 0, f"{failed} runs failed")

    bad = sum(not keys.verifies([dump.read_bytes()], sandbox.pair) for _, dump in runs)
    findings.expect(bad == 0, f"{bad} dumps do not verify")
    logs = [session / "migration.log" for session in {session for session, _ in runs}]
    for log in [*logs, sandbox.custom / "custom.log"]:
        check_log(findings, log, len(runs) // len(logs) if log in logs else len(runs))
    check_profile(findings, sandbox, len(runs))
    return findings


def check_log(findings, log, runs):
    lines = log.read_text().splitlines()
    findings.expect(all(LOG_LINE.fullmatch(line) for line in lines), f"{log}: a torn line")
    findings.expect(len(lines) == 2 * runs, f"{log}: {len(lines)} lines of {runs} runs")


def in_sandbox(name):
    worker.sandbox.reset(worker.sandbox.contents, stored=True)
    worker.sandbox.set_helper("")
    return CHECKS[name]()


CHECKS = {check.__doc__: check for check in
          (many_volumes, huge_dump, shared_profile, talkative_helper, one_session, own_sessions)}


def main():
    parser = argparse.ArgumentParser(prog="load")
    parser.add_argument("--build", required=True)
    parser.add_argument("--only", default="", help="the checks whose name matches this pattern")
    args = parser.parse_args()

    names = [name for name in CHECKS if re.search(args.only, name)]
    failures = 0
    with worker.workers(args.build, 1) as pool:
        for name in names:
            findings = pool.submit(in_sandbox, name).result()
            print(f"{name}: {'; '.join(findings.figures)}", *(f"  FAILURE {fault}" for fault in findings.faults), sep="\n",
                  flush=True)
            failures += bool(findings.faults)
    print(f"load: {len(names)} checks, {failures} failures")
    sys.exit(failures > 0)


if __name__ == "__main__":
    main()
