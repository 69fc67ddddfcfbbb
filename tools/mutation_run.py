#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes the library in one place at a time, and counts the changes that the tests catch.

scripts/mutate [--seed N] [--count N] [--file PART] [--mutant N] [--excused] [--keep] [--jobs N]

--seed N     another choice of mutants
--count N    about so many mutants
--file PART  only in files whose path contains this
--mutant N   this one alone, against every test that reaches it, and what the tests say
--excused    those too that tools/mutants_excused.txt holds, and whether one of them is caught
--keep       takes the programs as they were built last
--jobs N     so many processes at a time, otherwise as many as processors

All mutants are compiled into the test programs at once; the environment chooses one. First every
test runs with none, which shows what it reaches and how long it takes. Then each mutant meets the
tests that reach it, the quickest first, until one fails, crashes, or runs out of time. Ends with 1
if fewer than nine in ten of the mutants that are not excused are caught.
"""

import argparse
import collections
import concurrent.futures
import math
import multiprocessing
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import time

import excuses
import mutants

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
EXCUSED = ROOT / "tools" / "mutants_excused.txt"
PROGRAMS = ("vekch_tests", "vekch_internal_tests", "vekch_taken_tests")
# Blocks of 2 GiB take long, and find what depends on their size alone.
LEFT_OUT = ("SizeTest.",)
QUOTAS = {"frame": 3, "regexp": 220, "strings": 120, "unicode": 60}
WANTED = 0.9

HEADER = """\
#ifdef __cplusplus
extern "C" int vekch_mutant;
extern "C" unsigned char vekch_reached[];
#define VEKCH_IS_MUTANT(n) \\
  (!__builtin_is_constant_evaluated() && (vekch_reached[n] = 1, vekch_mutant == (n)))
#endif
"""

SWITCH = """
#include <stdio.h>
#include <stdlib.h>
int vekch_mutant;
unsigned char vekch_reached[%d];
__attribute__((constructor(101))) static void ChooseMutant() {
  const char* chosen = getenv("VEKCH_MUTANT");
  vekch_mutant = chosen ? atoi(chosen) : 0;
}
__attribute__((destructor)) static void WriteReached() {
  const char* name = getenv("VEKCH_REACHED");
  FILE* file = name ? fopen(name, "wb") : nullptr;
  if (file) {
    fwrite(vekch_reached, 1, sizeof vekch_reached, file);
    fclose(file);
  }
}
"""

Excuse = collections.namedtuple("Excuse", "kind reason")
Test = collections.namedtuple("Test", "program name seconds reached")
Outcome = collections.namedtuple("Outcome", "mutant caught seconds")


# ---- What is excused: the changes of each line, with what they change and the reason.


def read_excused():
    return {
        (file, text, change): Excuse(kind, reason)
        for file, text, change, kind, reason in excuses.read(EXCUSED, 3)
    }


def key_of(mutant):
    return mutant.site.file, mutant.line, mutant.name


def text_of(mutant):
    return f"  {mutant.number}: {mutant.site.file}\n     {mutant.line}\n     {mutant.name}"


# ---- Building


def find_sites(sources, jobs):
    units = [name for name in sources if name.endswith(".cpp")]
    with multiprocessing.Pool(jobs) as pool:
        found = pool.starmap(mutants.sites_of, [(ROOT, unit, sources) for unit in units], 1)
    refused = set().union(*(refused for _, refused in found))
    return set().union(*(sites for sites, _ in found)) - refused


def write(path, text):
    """Unchanged files keep their time, so that they are not compiled again."""
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


def write_tree(sources, chosen):
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, stdout=subprocess.PIPE, text=True, check=True)  # fmt: skip
    for name in listed.stdout.splitlines():
        source, target = ROOT / name, TREE / name
        if name in sources or not source.is_file():
            continue
        if not target.exists() or target.stat().st_mtime < source.stat().st_mtime:
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(source, target)
    for name, text in sources.items():
        inside = [mutant for mutant in chosen if mutant.site.file == name]
        more = SWITCH % (len(chosen) + 1) if name == "frame/version.cpp" else ""
        write(TREE / name, mutants.mutated(text, inside) + more)
    write(WORK / "mutant.h", HEADER)


def build(jobs):
    options = f"-include {WORK}/mutant.h -Wno-narrowing -w"
    for command in (
        ["cmake", "-S", TREE, "-B", WORK / "build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
         "-DCMAKE_CXX_COMPILER=g++", "-DCMAKE_C_COMPILER=gcc", f"-DCMAKE_CXX_FLAGS={options}",
         "-DVEKCH_BUILD_TESTS=ON", "-DVEKCH_BUILD_EXAMPLES=ON", "-DVEKCH_INSTALL=OFF",
         "-DBUILD_SHARED_LIBS=OFF"],
        ["cmake", "--build", WORK / "build", f"-j{jobs}", "--target", *PROGRAMS],
    ):  # fmt: skip
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            sys.exit(done.stdout[-6000:])


# ---- Running


def run_test(program, name, mutant, limit, reached="", shown=False):
    """Whether the test passed, and its processor time. `limit`: seconds of that, then it is over."""
    more = {"VEKCH_MUTANT": str(mutant), "GTEST_BREAK_ON_FAILURE": "1"}
    if reached:
        more["VEKCH_REACHED"] = reached
    output = None if shown else subprocess.DEVNULL
    process = subprocess.Popen(
        [WORK / "build" / program, f"--gtest_filter={name}", "--gtest_brief=1"],
        env={**os.environ, **more}, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
    )  # fmt: skip
    resource.prlimit(process.pid, resource.RLIMIT_CPU, (limit, limit))
    _, status, used = os.wait4(process.pid, 0)
    process.returncode = status
    return status == 0, used.ru_utime + used.ru_stime


def list_tests(program):
    listed = subprocess.run([WORK / "build" / program, "--gtest_list_tests"],
                            stdout=subprocess.PIPE, text=True, check=True)  # fmt: skip
    suite = ""
    for line in listed.stdout.splitlines():
        name = line.split("#")[0].rstrip()
        if not name.startswith(" "):
            suite = name
        elif not suite.startswith(LEFT_OUT):
            yield program, suite + name.strip()


def try_without_mutant(test):
    program, name = test
    file = WORK / "reached" / f"{program}.{name.replace('/', '.')}"
    passed, seconds = run_test(program, name, 0, 600, str(file))
    if not passed:
        sys.exit(f"{name} fails without a mutant")
    reached = {n for n, byte in enumerate(file.read_bytes()) if byte}
    return Test(program, name, seconds, reached)


def try_mutant(mutant, tests):
    seconds = 0.0
    for test in tests:
        if mutant.number in test.reached:
            limit = math.ceil(1 + 2 * test.seconds)
            passed, used = run_test(test.program, test.name, mutant.number, limit)
            seconds += used
            if not passed:
                return Outcome(mutant, test.name, seconds)
    print(f"survived\n{text_of(mutant)}", flush=True)
    return Outcome(mutant, None, seconds)


# ---- Reporting


def report(outcomes, excused):
    counts = collections.defaultdict(collections.Counter)
    for outcome in outcomes:
        folder = outcome.mutant.site.file.split("/")[0]
        excuse = excused.get(key_of(outcome.mutant))
        state = "excused" if excuse else "caught" if outcome.caught else "survived"
        counts[folder][state] += 1
        if excuse and outcome.caught:
            print(f"excused, but caught by {outcome.caught}\n{text_of(outcome.mutant)}")
    total = sum(counts.values(), collections.Counter())
    for folder, count in [*sorted(counts.items()), ("together", total)]:
        tried = count["caught"] + count["survived"]
        print(f"{folder:9} {tried + count['excused']:4} mutants, {count['excused']:3} excused,"
              f" {count['caught']:4} of {tried:4} caught:"
              f" {100 * count['caught'] / max(1, tried):.1f} %")  # fmt: skip
    return total["caught"] >= WANTED * (total["caught"] + total["survived"])


def parse_arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/mutate", usage=argparse.SUPPRESS, epilog=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter)  # fmt: skip
    parser.add_argument("--seed", type=int, default=1, help=argparse.SUPPRESS)
    parser.add_argument("--count", type=int, default=sum(QUOTAS.values()), help=argparse.SUPPRESS)
    parser.add_argument("--file", default="", help=argparse.SUPPRESS)
    parser.add_argument("--mutant", type=int, help=argparse.SUPPRESS)
    parser.add_argument("--excused", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--keep", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help=argparse.SUPPRESS)
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    excused = read_excused()
    sources = mutants.read_sources(ROOT)
    everything = mutants.all_mutants(sources, find_sites(sources, arguments.jobs), arguments.seed)
    scale = arguments.count / sum(QUOTAS.values())
    quotas = {folder: math.ceil(count * scale) for folder, count in QUOTAS.items()}
    inside = [mutant for mutant in everything if arguments.file in mutant.site.file]
    chosen = mutants.choose(inside, quotas)
    if not arguments.keep:
        write_tree(sources, chosen)
        build(arguments.jobs)
    if arguments.mutant:
        print(text_of(chosen[arguments.mutant - 1]))

    (WORK / "reached").mkdir(parents=True, exist_ok=True)
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        started = time.monotonic()
        names = [test for program in PROGRAMS for test in list_tests(program)]
        tests = sorted(pool.map(try_without_mutant, names), key=lambda test: test.seconds)
        if arguments.mutant:
            for test in tests:
                if arguments.mutant in test.reached:
                    print(test.name, flush=True)
                    run_test(test.program, test.name, arguments.mutant,
                             math.ceil(1 + 2 * test.seconds), shown=True)  # fmt: skip
            return 0
        print(f"{len(everything)} positions, {len(chosen)} mutants, {len(tests)} tests in"
              f" {sum(test.seconds for test in tests):.0f} s of processor time", flush=True)
        tried = [m for m in chosen if arguments.excused or key_of(m) not in excused]
        outcomes = list(pool.map(lambda mutant: try_mutant(mutant, tests), tried))
        outcomes += [Outcome(m, None, 0.0) for m in chosen if m not in tried]
    enough = report(outcomes, excused)
    spent = sum(outcome.seconds for outcome in outcomes) + sum(test.seconds for test in tests)
    print(f"{spent:.0f} s of processor time, {time.monotonic() - started:.0f} s by the clock")
    return 0 if enough else 1


if __name__ == "__main__":
    sys.exit(main())
