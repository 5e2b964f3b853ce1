"""How times grow: with the size of the dump, and those of the library's parts by Google Benchmark's fits."""

import json
import statistics
import subprocess

from measure import Command, Comparison, compare
from site_under_test import MIB

PROGRAMS = ("text_bench", "spawn_bench", "xml_log_bench")


def by_size(site):
    """The wall times of verifying dumps of several sizes, by size in MiB."""
    results = {}
    for mebibytes in (1, 4, 8, 16) if site.quick else (64, 128, 256, 512, 768, 1024):
        dump = site.signed(mebibytes * MIB)
        result = compare(Comparison("", [
            Command("openssl dgst -sha1 -verify", site.openssl_verify(dump)),
            Command("backup_sign --verify-dump", (site.tool, "--verify-dump", dump)),
            Command("dumpsig verify", (site.dumpsig, "verify", "-k", site.public_key, dump)),
        ], 3 if site.quick else 5))
        results[mebibytes] = {name: result.spread(name, "wall") for name in result.rounds}
    return results


def plot_data(results):
    """For gnuplot: a block for each program, with the sizes in MiB and the medians, least and most in milliseconds."""
    blocks = []
    for name in next(iter(results.values())):
        lines = [f'"{name}"']
        for mebibytes, spreads in results.items():
            spread = spreads[name]
            lines.append(f"{mebibytes} {spread.median:.2f} {spread.least:.2f} {spread.most:.2f}")
        blocks.append("\n".join(lines))
    return "\n\n\n".join(blocks) + "\n"


def fits_table(results):
    """The straight lines through the medians."""
    lines = ["| Verifying | ms for each GiB | and for none | R² |", "|---|---|---|---|"]
    for name in next(iter(results.values())):
        times = [spreads[name].median for spreads in results.values()]
        slope, intercept = statistics.linear_regression(list(results), times)
        fit = statistics.correlation(list(results), times) ** 2
        lines.append(f"| `{name}` | {slope * 1024:.0f} | {intercept:.1f} | {fit:.5f} |")
    return "\n".join(lines)


def parts(site):
    """What the Google Benchmark programs print, as one list of their runs and fits."""
    reports = []
    for program in PROGRAMS:
        options = ["--benchmark_format=json", f"--benchmark_min_time={0.01 if site.quick else 0.5}"]
        output = site.call(site.build / "bin" / program, *options, output=subprocess.PIPE)
        reports += json.loads(output)["benchmarks"]
    return reports


def milliseconds_by_run(reports):
    """The times, by names such as settings/16000."""
    clock = lambda run: run["real_time" if run["name"].endswith("/real_time") else "cpu_time"]
    return {run["name"].removesuffix("/real_time"): clock(run) for run in reports if run["run_type"] == "iteration"}


def digits(number):
    """Three of them."""
    return f"{float(f'{number:.3g}'):g}"


def parts_table(reports):
    """One row for each benchmark: what it takes from the least to the most, and how it grows."""
    times = milliseconds_by_run(reports)
    fits = {}
    for fit in reports:
        if fit["run_type"] == "aggregate":
            fits.setdefault(fit["run_name"].removesuffix("/real_time"), {})[fit["aggregate_name"]] = fit
    lines = ["| Benchmark | n | ms | Best fit | RMS |", "|---|---|---|---|---|"]
    for name, fit in fits.items():
        own = {int(run.split("/")[1]): time for run, time in times.items() if run.split("/")[0] == name}
        first, last = min(own), max(own)
        lines.append(f"| `{name}` | {first:,} to {last:,} | {digits(own[first])} to {digits(own[last])} "
                     f"| {fit['BigO']['big_o']} | {fit['RMS']['rms'] * 100:.0f}% |")
    return "\n".join(lines)
