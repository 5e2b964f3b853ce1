"""Breaks the product's logic, one small place at a time, and sees whether a test notices. Called by scripts/mutate."""

import argparse
import json
import os
import random
import re
import shutil
import subprocess
import sys
import time
from collections import Counter, deque
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from queue import SimpleQueue

import mutants
from equivalent import EQUIVALENT

FOLDERS = ("backup_sign", "backup_sign_lib", "commons", "lib", "log4cpp_additions", "product", "dumpsig")
BUILD = "build/standalone"
NEEDED = 0.9
# Tests that take longer than all others together, and those of scripts.
SLOW = "-*FourGigabytes*:*AThousandDumps*:*ManyDumps*:*ManualAndTheCompletion*:*VerifyIndependently*"
NOTICED, HANGS, SURVIVED, IMPOSSIBLE = "noticed", "noticed, as it hangs", "survived", "does not compile"

# What is broken on purpose may kill, write and remove: it sees its own processes only, and instead of the repository a
# copy of it, which is all of the root file system that it may write to. The shell stays as the first process there, since
# that is the one that gets the orphans.
CAGE = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", "/bin/sh", "-ec", """
    mount -t tmpfs -o size=1g,mode=1777 tmpfs /tmp
    mount --bind "$1" "$2"
    mount -o remount,bind,ro /
    ulimit -c 0
    ulimit -v 8000000
    cd "$2"
    shift 2
    "$@" || exit""", "sh"]


def files_of(repo):
    command = ["git", "-C", repo, "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    listed = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return [name for name in listed.split("\0") if name and (repo / name).is_file()]


def sources_of(names):
    return [name for name in names if name.startswith(tuple(f"{folder}/" for folder in FOLDERS))
            and name.endswith((".cpp", ".h"))]


class Program:
    """A program of tests, or one that replays what was found by fuzzing, by its target's name."""

    def __init__(self, path, folder, arguments):
        self.path, self.folder, self.arguments, self.name = path, folder, arguments, Path(path).name
        self.seconds = 0  # that it takes when nothing is broken

    def likely(self, file):
        """Smaller for a program that is more likely to notice a fault in the file."""
        room = Path(file).parent
        same_room = self.name == f"{room.name}_tests"
        same_folder = self.folder.startswith(f"tests/{room}")
        return not same_room, not same_folder, not self.folder.startswith(f"tests/{room.parts[0]}"), self.seconds


class Tree:
    """A copy of the sources and their build, which stands in the repository's place for whatever runs in it."""

    def __init__(self, home, repo, names):
        self.repo, self.root, self.kept = repo, home / "tree", home / "kept"
        self.build = self.root / BUILD
        shutil.rmtree(home, ignore_errors=True)
        for name in names:
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(repo / name, self.root / name)
        for copy in (self.build, self.kept):
            shutil.copytree(repo / BUILD, copy, symlinks=True)

    def run(self, command, timeout=None):
        # In a session of its own, as whoever signals its process group reaches beyond the name space.
        return subprocess.run([*CAGE, self.root, self.repo, *command], timeout=timeout, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, errors="replace", start_new_session=True)

    def try_tests(self, program, timeout):
        try:
            tests = self.run([program.path, *program.arguments], timeout)
        except subprocess.TimeoutExpired:
            return HANGS
        return SURVIVED if tests.returncode == 0 else NOTICED

    def time(self, program):
        begin = time.monotonic()
        if self.try_tests(program, 600) != SURVIVED:
            sys.exit(f"mutate: {program.name} fails without a fault")
        program.seconds = time.monotonic() - begin

    def notices(self, mutant, programs):
        for program in sorted(programs, key=lambda each: each.likely(mutant.file)):
            made = self.run(["ninja", "-C", BUILD, "-j2", program.name])
            if made.returncode != 0:
                return IMPOSSIBLE
            if "no work to do" in made.stdout:
                continue  # it has nothing to do with the file
            verdict = self.try_tests(program, 30 + 10 * program.seconds)
            if verdict != SURVIVED:
                return verdict
        return SURVIVED

    def put_back(self):
        """Makes the build what it was, to the time of each file, so that nothing is built anew."""
        for folder, _, names in os.walk(self.build):
            for name in names:
                path = Path(folder, name)
                kept = self.kept / path.relative_to(self.build)
                if not os.path.lexists(kept):
                    path.unlink()
                elif path.lstat().st_mtime_ns != kept.lstat().st_mtime_ns:
                    path.unlink()
                    shutil.copy2(kept, path, follow_symlinks=False)

    def try_mutant(self, mutant, programs):
        source = self.root / mutant.file
        text, times = source.read_text(), source.stat()
        try:
            source.write_text(mutant.apply(text))
            return self.notices(mutant, programs)
        finally:
            source.write_text(text)
            os.utime(source, ns=(times.st_atime_ns, times.st_mtime_ns))
            self.put_back()


def programs_of(repo):
    """The programs of scripts/test that are ours, in the order of their names."""
    listed = subprocess.run(["ctest", "--show-only=json-v1"], cwd=repo / BUILD, check=True, capture_output=True).stdout
    found = {}
    for test in json.loads(listed)["tests"]:
        folder = next(each["value"] for each in test["properties"] if each["name"] == "WORKING_DIRECTORY")
        path, *arguments = test["command"]
        if any(argument.startswith("--gtest_filter") for argument in arguments):
            arguments = [f"--gtest_filter={SLOW}", "--gtest_fail_fast"]
        elif not test["name"].startswith("FuzzCorpus."):
            continue
        found[path] = Program(path, os.path.relpath(folder, repo / BUILD), arguments)
    return [found[path] for path in sorted(found)]


def check_list(repo):
    """A row about a line that has changed would leave out nothing, and be believed."""
    for file, line, _ in sorted(EQUIVALENT):
        if line not in (each.strip() for each in (repo / file).read_text().split("\n")):
            sys.exit(f"mutate: equivalent.py knows a line that is not in {file}: {line}")


def sample(repo, names, only, seed):
    """All mutants in a random order, one for each place. A place keeps its rank as long as its line is the same, so that
    the survivors of a run are tried again when the tests have learned of them. Without those that are equivalent."""
    ranked, seen = [], Counter()
    for name in sources_of(names):
        text = (repo / name).read_text()
        lines = text.split("\n")
        for place in mutants.places(name, text):
            line = lines[place[0].line - 1].strip()
            what = f"{seed} {name} {line} {place[0].was}"
            seen[what] += 1
            chance = random.Random(f"{what} {seen[what]}")
            rank, mutant = chance.random(), chance.choice(place)
            if (name, line, f"{mutant.was} -> {mutant.replacement}") not in EQUIVALENT:
                ranked.append((rank, mutant))
    ranked.sort(key=lambda each: each[0])
    return [mutant for _, mutant in ranked if re.search(only, str(mutant))]


def try_all(trees, programs, chosen, count):
    """Yields (mutant, verdict) until `count` of them could be compiled, in the order of the sample."""
    idle = SimpleQueue()
    for tree in trees:
        idle.put(tree)

    def try_one(mutant):
        tree = idle.get()
        try:
            return tree.try_mutant(mutant, programs)
        finally:
            idle.put(tree)

    with ThreadPoolExecutor(len(trees)) as pool:
        rest, started = iter(chosen), deque()
        while count > 0:
            while len(started) <= len(trees) and (mutant := next(rest, None)):
                started.append((mutant, pool.submit(try_one, mutant)))
            if not started:
                break
            mutant, future = started.popleft()
            verdict = future.result()
            count -= verdict != IMPOSSIBLE
            yield mutant, verdict
        for _, future in started:
            future.cancel()


def main():
    parser = argparse.ArgumentParser(prog="mutate")
    parser.add_argument("--repo", type=Path, required=True)
    parser.add_argument("count", nargs="?", type=int, default=200)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--only", default="", help="the mutants whose line of the list matches this pattern")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true", help="print the sample and try none")
    parser.add_argument("--verbose", action="store_true", help="print each mutant, not only the survivors")
    args = parser.parse_args()

    check_list(args.repo)
    names = files_of(args.repo)
    chosen = sample(args.repo, names, args.only, args.seed)
    if args.list:
        print(*chosen[:args.count], sep="\n")
        return
    trees = [Tree(args.repo / "build/mutate" / str(number), args.repo, names) for number in range(args.jobs)]
    programs = programs_of(args.repo)
    for program in programs:
        trees[0].time(program)
        if args.verbose:
            print(f"{program.name} takes {program.seconds:.1f} s", flush=True)

    tried = noticed = 0
    for mutant, verdict in try_all(trees, programs, chosen, args.count):
        tried += verdict != IMPOSSIBLE
        noticed += verdict in (NOTICED, HANGS)
        if verdict == SURVIVED or args.verbose:
            print(f"{time.strftime('%H:%M:%S ') if args.verbose else ''}{verdict.upper()} {mutant}", flush=True)
    print(f"mutate: {noticed} of {tried} noticed")
    sys.exit(noticed < NEEDED * tried)


if __name__ == "__main__":
    main()
