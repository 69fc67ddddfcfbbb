#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs of the benchmarks: what was measured, what of it is kept, and how two of them compare.

    tools/bench_runs.py keep AS_IS.csv SSE2.csv      keeps a run, in bench/runs/PROCESSOR
    tools/bench_runs.py compare AS_IS.csv SSE2.csv   names the cells that fell since the kept run

A run is two tables, beside the C library as it is and held to SSE2. Of each processor the last
whole run is kept. A ratio is the fastest peer's time over ours.
"""

import csv
import datetime
import math
import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys
from collections import Counter, defaultdict, namedtuple

RUNS = pathlib.Path(__file__).resolve().parent.parent / "bench" / "runs"
TABLES = ("as-is", "sse2")
OURS = "vekch"
NAIVE = {"plain loop", "each by libc"}  # peers that no one takes who wants speed
FALLEN = 0.9

# A cell is one case at one size. `size` is what one call goes through, about: a case that has only
# one size may give what all its calls go through together. `times`: nanoseconds of each contender.
Cell = namedtuple("Cell", "family case bytes size ratio peer ratios times")


def read_table(path):
    """The cells of a table in the order of the run, by family, case and bytes."""
    rows = defaultdict(list)
    with open(path, newline="") as file:
        for row in csv.DictReader(file):
            rows[row["family"], row["case"], int(row["bytes"])].append(row)
    sizes = Counter(key[:2] for key in rows)
    cells = {}
    for key, measured in rows.items():
        ratios = {row["contender"]: float(row["ratio"]) for row in measured if row["contender"] != OURS}
        if ratios:
            peer = min(ratios, key=ratios.get)
            calls = int(measured[0]["calls"])
            size = key[2] / calls if sizes[key[:2]] == 1 and key[2] > calls else key[2]
            times = {row["contender"]: float(row["nanoseconds"]) for row in measured}
            cells[key] = Cell(*key, size, ratios[peer], peer, ratios, times)
    return cells


class Run:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.name = self.folder.name
        self.machine = (self.folder / "machine.txt").read_text().splitlines()
        self.date = next(line for line in self.machine if line.startswith("date: "))[6:]

    def table(self, name):
        return read_table(self.folder / f"{name}.csv")


def kept_runs():
    """The last one first."""
    runs = [Run(path.parent) for path in RUNS.glob("*/machine.txt")]
    return sorted(runs, key=lambda run: (run.date, run.name), reverse=True)


def mean(ratios):
    ratios = list(ratios)
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else None


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def processor():
    lines = (line.split(":", 1) for line in output("lscpu").splitlines() if ":" in line)
    return {name.strip(): value.strip() for name, value in lines}


def folder_of(cpu):
    maker = re.sub(r"^Genuine|^Authentic", "", cpu["Vendor ID"]).lower()
    return f"{maker}-{cpu['CPU family']}-{cpu['Model']}"


def machine(cpu):
    where = ""
    if "Hypervisor vendor" in cpu:
        where = f", {cpu['CPU(s)']} processors of a virtual machine ({cpu['Hypervisor vendor']})"
    caches = [f"{name} {cpu[name + ' cache']}" for name in ("L1d", "L2", "L3") if name + " cache" in cpu]
    return [
        f"date: {datetime.date.today().isoformat()}",
        f"processor: {cpu['Model name']} (family {cpu['CPU family']}, model {cpu['Model']}){where}",
        f"caches in all: {', '.join(caches)}",
        f"C library: {' '.join(platform.libc_ver())}",
        f"compiler: {output('g++', '--version').splitlines()[0]}",
        f"load average at the end: {os.getloadavg()[2]:.1f} (at {cpu['CPU(s)']} and more the machine"
        " was busy with other things)",
    ]


def keep(paths):
    cpu = processor()
    folder = RUNS / folder_of(cpu)
    folder.mkdir(parents=True, exist_ok=True)
    for name, path in zip(TABLES, paths):
        shutil.copyfile(path, folder / f"{name}.csv")
    (folder / "machine.txt").write_text("\n".join(machine(cpu)) + "\n")
    print(f"kept in {folder.relative_to(RUNS.parent.parent)}")


def compare_tables(name, now, then):
    both = [key for key in now if key in then]
    change = {key: now[key].ratio / then[key].ratio for key in both}
    fallen = sorted((key for key in both if change[key] < FALLEN), key=change.get)
    if not both:
        print(f"\n{name}: no cell is in both runs")
        return
    print(f"\n{name}: {len(both)} cells, together {mean(change.values()):.2f} of what they were;"
          f" {len(fallen)} fell by more than a tenth{':' if fallen else '.'}")
    for key in fallen:
        cell = now[key]
        print(f"  {then[key].ratio:5.2f} -> {cell.ratio:5.2f}  {'/'.join(map(str, key))}  ({cell.peer})")


def compare(paths):
    runs = kept_runs()
    if not runs:
        sys.exit("no run is kept: scripts/bench --update-docs keeps one")
    own = folder_of(processor())
    run = next((run for run in runs if run.name == own), runs[0])
    print(f"\nBeside the run of {run.date} on {run.name}"
          f"{'' if run.name == own else ', another processor'}:")
    for name, path in zip(TABLES, paths):
        compare_tables(name, read_table(path), run.table(name))


def main():
    actions = {"keep": keep, "compare": compare}
    if len(sys.argv) != 4 or sys.argv[1] not in actions:
        sys.exit(__doc__)
    actions[sys.argv[1]](sys.argv[2:])


if __name__ == "__main__":
    main()
