"""The comparisons of whole programs, each in turn in one run."""

import os
import subprocess

from measure import Command, Comparison, compare
from site_under_test import MIB, PAGE

SMALL = 2 * PAGE


def comparison(site, title, commands, runs=1, rounds=11):
    """An odd number of rounds; `runs` of each command in a round, where one is short."""
    return compare(Comparison(title, commands, 3 if site.quick else rounds, min(runs, 3) if site.quick else runs))


def dumpsig_verify(site, dump):
    return Command("`dumpsig verify`", (site.dumpsig, "verify", "-k", site.public_key, dump))


def start(site):
    return comparison(site, "Start to exit", [
        Command("`openssl version`", ("openssl", "version")),
        Command("`backup_sign --help`", (site.tool, "--help"), code=1),
        Command("nothing, with the libraries of `backup_sign`", (site.bare_start,)),
        Command("`dumpsig --version`", (site.dumpsig, "--version")),
    ], 25)


def verify_small(site):
    dump = site.signed(SMALL)
    verify = (site.tool, "--verify-dump", dump)
    return comparison(site, "Verifying a dump of 4 KiB", [
        Command("`openssl dgst -sha1 -verify`", site.openssl_verify(dump)),
        Command("`backup_sign --verify-dump`", verify),
        Command("with `--session-path`", (*verify, f"--session-path={site.work}/session")),
        Command("with `LC_ALL=C.UTF-8`", verify, env={"LC_ALL": "C.UTF-8"}),
        dumpsig_verify(site, dump),
    ], 25)


def sign_small(site):
    dump = site.content(SMALL)
    sign = (site.tool, "--sign-dump", dump)
    unsign = lambda: os.truncate(dump, SMALL - PAGE)
    return comparison(site, "Signing a dump of 4 KiB", [
        Command("`backup_sign --sign-dump`", sign, unsign),
        Command("with a session", (*sign, f"--session-path={site.work}/session"), unsign),
    ], 25)


def helper(site):
    site.signed(SMALL)  # so that there is a pair
    return comparison(site, "The key pair's helper by itself", [
        Command("`/bin/true`", ("/bin/true",)),
        Command("`backup_restore_helper --get-backup-certificate`", (site.helper, "--get-backup-certificate")),
    ], 25)


def sign(site):
    dump = site.content(site.size)
    return comparison(site, f"Signing {site.size // MIB} MiB", [
        Command("`openssl dgst -sha1 -sign`",
                ("openssl", "dgst", "-sha1", "-sign", site.key, "-out", f"{dump}.rsa", dump)),
        Command("`backup_sign --sign-dump`", (site.tool, "--sign-dump", dump),
                lambda: os.truncate(dump, site.size - PAGE)),
    ])


def verify(site):
    dump = site.signed(site.size)
    return comparison(site, f"Verifying {site.size // MIB} MiB", [
        Command("`openssl dgst -sha1 -verify`", site.openssl_verify(dump)),
        Command("`backup_sign --verify-dump`", (site.tool, "--verify-dump", dump)),
        dumpsig_verify(site, dump),
        Command("bare loop of reads and EVP updates", (site.bare_loop, "--read", dump)),
        Command("EVP from the mapped file", (site.bare_loop, "--map", dump)),
        Command("EVP from one block in the cache", (site.bare_loop, "--memory", str(site.size))),
    ])


def others(site):
    dump = site.signed(site.size)
    return comparison(site, f"{site.size // MIB} MiB with tools that do less or something else", [
        dumpsig_verify(site, dump),
        Command("`sha1sum`", ("sha1sum", dump)),
        Command("`rhash --sha1`", ("rhash", "--sha1", dump)),
        Command("`minisign -V` (BLAKE2b)", site.minisign_verify(dump)),
        Command("`signify-openbsd -V` (SHA-512)", site.signify_verify(dump)),
        Command("`gpg --verify` (SHA-512)", site.gpg_verify(dump)),
    ], rounds=5)


def pipe(site):
    dump = site.signed(site.size)
    from_pipe = ("sh", "-c", 'cat "$0" | "$@"', dump)
    return comparison(site, f"Verifying {site.size // MIB} MiB from a pipe, `cat` included", [
        Command("`openssl dgst -sha1`", (*from_pipe, "openssl", "dgst", "-sha1")),
        Command("`dumpsig verify -`", (*from_pipe, site.dumpsig, "verify", "-k", site.public_key, "-")),
    ])


COMPARISONS = {
    "start": start,
    "verify-small": verify_small,
    "sign-small": sign_small,
    "helper": helper,
    "sign": sign,
    "verify": verify,
    "others": others,
    "pipe": pipe,
}


def peak(site, *argv):
    """Peak resident memory in KiB, of the largest process. By time(1), as a peak begins with that of the parent."""
    report = site.work / "peak"
    site.call("time", "-f", "%M", "-o", report, *argv)
    return int(report.read_text())


def memory(site):
    sizes = {"64 KiB": 64 << 10, "64 MiB": 64 * MIB} if site.quick else {"64 KiB": 64 << 10, "8 GiB": 8192 * MIB}
    peaks = {"`backup_sign --sign-dump`": [], "`backup_sign --verify-dump`": [], "`dumpsig verify`": []}
    for size in sizes.values():
        dump = site.work / "sparse"
        with open(dump, "wb") as file:
            file.truncate(size)
        for taken, argv in zip(peaks.values(), [(site.tool, "--sign-dump", dump), (site.tool, "--verify-dump", dump),
                                                (site.dumpsig, "verify", "-k", site.public_key, dump)]):
            taken.append(peak(site, *argv))
        dump.unlink()
    return peaks, list(sizes)


def memory_table(peaks, sizes):
    rows = [f"| {name} | {' | '.join(f'{kib / 1024:.1f} MiB' for kib in taken)} |" for name, taken in peaks.items()]
    return "\n".join([f"| Peak of resident memory | {' | '.join(sizes)} |", "|---|---|---|", *rows])
