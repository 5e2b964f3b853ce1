"""What the programs are held to, and whether they are."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Target:
    what: str
    limit: float
    value: float
    text: str  # the value as it is shown

    def row(self):
        return f"| {self.what} | {self.text} | {'yes' if self.value <= self.limit else '**no**'} |"


def spread_target(what, limit, spread, unit=""):
    return Target(f"{what}: at most {limit:g}{unit}", limit, spread.median, spread.text(2) + unit)


def program_targets(results):
    """`results`: of the comparisons, by name."""
    helped, small, sign, whole, pipe = (results[name] for name in ("start", "verify-small", "sign-small", "verify", "pipe"))
    openssl_small, tool = "`openssl dgst -sha1 -verify`", "`backup_sign --verify-dump`"
    dumpsig = "`dumpsig verify`"
    return [
        spread_target("`backup_sign --help`, processor time of `openssl version`", 1.4,
                      helped.ratio("`backup_sign --help`", "`openssl version`", "processor")),
        spread_target("`--verify-dump` of a small dump, processor time of `openssl dgst -sha1 -verify`", 1.8,
                      small.ratio(tool, openssl_small, "processor")),
        spread_target("signing with `--session-path`, more than without", 1.5,
                      sign.difference("with a session", "`backup_sign --sign-dump`", "wall"), " ms"),
        spread_target("`dumpsig verify` of the large dump, wall time of `openssl dgst -sha1 -verify`", 0.85,
                      whole.ratio(dumpsig, openssl_small, "wall")),
        spread_target("`dumpsig verify` of the large dump, wall time of EVP from the cache", 1.05,
                      whole.ratio(dumpsig, "EVP from one block in the cache", "wall")),
        spread_target("`dumpsig verify` from a pipe, wall time of `openssl dgst -sha1`", 1,
                      pipe.ratio("`dumpsig verify -`", "`openssl dgst -sha1`", "wall")),
    ]


def memory_target(peaks):
    small, huge = (kib / 1024 for kib in peaks["`dumpsig verify`"])
    return Target("`dumpsig verify`, memory: under 16 MiB for the huge dump", 16, huge, f"{huge:.1f} MiB, {huge - small:+.1f} MiB")


def parts_targets(times):
    """`times`: milliseconds of the library's benchmarks."""
    targets = []
    for name, what in (("messagesAtTheRootThenInOneObject", "n messages at the root, then n into one object"),
                       ("messagesAtTheRootAndInOneObjectInTurn", "the same in turn")):
        seconds, growth = times[f"{name}/59000"] / 1000, times[f"{name}/40000"] / times[f"{name}/20000"]
        targets.append(Target(f"{what}: 59,000 under 3 s", 3, seconds, f"{seconds:.2f} s"))
        targets.append(Target(f"{what}: 40,000 at most 2.3 times 20,000", 2.3, growth, f"{growth:.2f}"))
    for name, what, limit in (("distinctObjectsBesideMessages", "10,000 distinct objects beside messages", 2),
                              ("mergedResult", "`AddResultFile` of 59,000 messages and 10,000 objects", 5)):
        seconds = times[f"{name}/10000"] / 1000
        targets.append(Target(f"{what}: under {limit} s", limit, seconds, f"{seconds:.2f} s"))
    return targets


def table(targets):
    return "\n".join(["| Target | Measured | Met |", "|---|---|---|", *(target.row() for target in targets)])
