#!/usr/bin/env python3
"""Replaces the measured part of a document by the tables of two runs of the benchmarks.

    tools/bench_tables.py AS_IS.csv SSE2.csv DOCUMENT.md

The part lies between the two marker lines. A ratio is the fastest peer's time over ours.
"""

import csv
import datetime
import math
import os
import platform
import re
import subprocess
import sys
from collections import defaultdict

BEGIN = "<!-- measured: scripts/bench --update-docs writes from here -->"
END = "<!-- measured: to here -->"
OURS = "vekch"
SHOWN_SIZES = [8, 31, 100, 1024, 65536, 1 << 20, 1 << 26]
MIXED = 0  # the column of the cases that make many calls on one input


def size_name(size):
    if size == MIXED:
        return "many calls"
    for unit, name in ((1 << 20, "MiB"), (1 << 10, "KiB")):
        if size >= unit and size % unit == 0:
            return f"{size // unit} {name}"
    return f"{size} B"


def read_ratios(path):
    """{(family, case, size): {peer: ratio}} in the order of the run."""
    with open(path, newline="") as file:
        rows = [row for row in csv.DictReader(file) if row["contender"] != OURS]
    sizes = defaultdict(set)
    for row in rows:
        sizes[row["family"], row["case"]].add(row["bytes"])
    measured = defaultdict(dict)
    for row in rows:
        one_of_a_kind = len(sizes[row["family"], row["case"]]) == 1
        size = MIXED if row["calls"] != "1" and one_of_a_kind else int(row["bytes"])
        measured[row["family"], row["case"], size][row["contender"]] = float(row["ratio"])
    return measured


def fastest_peers(measured):
    """{(family, case, size): (ratio, fastest peer)}"""
    return {key: min((ratio, peer) for peer, ratio in peers.items()) for key, peers in measured.items()}


def command_output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def machine():
    cpu = dict(line.split(":", 1) for line in command_output("lscpu").splitlines() if ":" in line)
    cpu = {name.strip(): value.strip() for name, value in cpu.items()}
    text = f"{cpu['Model name']} (family {cpu['CPU family']}, model {cpu['Model']})"
    text += f", {cpu['CPU(s)']} processors"
    if "Hypervisor vendor" in cpu:
        text += f" of a virtual machine ({cpu['Hypervisor vendor']})"
    caches = [f"{name} {cpu[name + ' cache']}" for name in ("L1d", "L2", "L3") if name + " cache" in cpu]
    compiler = command_output("g++", "--version").splitlines()[0]
    libc = " ".join(platform.libc_ver())
    return [
        f"- Processor: {text}; caches in all: {', '.join(caches)}",
        f"- C library: {libc}; compiler: {compiler}",
        f"- Measured on {datetime.date.today().isoformat()}, with a load average of"
        f" {os.getloadavg()[2]:.1f} at the end: at {cpu['CPU(s)']} and more the machine was busy"
        " with other things",
    ]


def geometric_mean(values):
    return math.exp(sum(math.log(value) for value in values) / len(values))


def summary(families, sse2, as_is):
    lines = [
        "| Family | Cells | Behind, SSE2 | Mean, SSE2 | Behind, as it is | Mean, as it is |",
        "| --- | ---: | ---: | ---: | ---: | ---: |",
    ]
    for family in families + [None]:
        cells = [f"{family or '**all**'}"]
        for run in (sse2, as_is):
            ratios = [ratio for key, (ratio, _) in run.items() if family in (key[0], None)]
            if len(cells) == 1:
                cells.append(str(len(ratios)))
            cells.append(str(sum(ratio < 1 for ratio in ratios)))
            cells.append(f"{geometric_mean(ratios):.2f}")
        lines.append("| " + " | ".join(cells) + " |")
    return lines


def cell(held, as_is):
    if held is None or as_is is None:
        return ""
    text = f"{held:.2f}"
    text = f"**{text}**" if held < 1 else text
    return f"{text} ({as_is:.2f})"


def table(columns, rows):
    lines = ["| Case | " + " | ".join(columns) + " |", "| --- |" + " ---: |" * len(columns)]
    return lines + ["| " + " | ".join([case, *cells]) + " |" for case, cells in rows.items() if any(cells)]


def table_by_size(keys, sse2, as_is):
    """The fastest peer's ratios, a column for each size."""
    held, free = fastest_peers(sse2), fastest_peers(as_is)
    sizes = [size for size in SHOWN_SIZES + [MIXED] if any(key[2] == size for key in keys)]
    rows = defaultdict(list)
    for family, case in dict.fromkeys(key[:2] for key in keys):
        for size in sizes:
            key = (family, case, size)
            rows[case].append(cell(held.get(key, [None])[0], free.get(key, [None])[0]))
    return table([size_name(size) for size in sizes], rows)


def table_by_peer(keys, peers, sse2, as_is):
    """For cases that have one size each, which says little: a column for each peer."""
    rows = {key[1]: [cell(sse2[key].get(peer), as_is.get(key, {}).get(peer)) for peer in peers] for key in keys}
    return table(peers, rows)


def family_table(family, sse2, as_is):
    keys = [key for key in sse2 if key[0] == family]
    peers = list(dict.fromkeys(peer for key in keys for peer in sse2[key]))
    lines = ["", f"### {family}", "", f"Beside {', '.join(peers)}.", ""]
    if len({key[1] for key in keys}) == len(keys) and MIXED not in {key[2] for key in keys}:
        return lines + table_by_peer(keys, peers, sse2, as_is)
    return lines + table_by_size(keys, sse2, as_is)


def behind(run):
    """One line a case: the sizes at which a peer is faster, and which."""
    found = defaultdict(list)
    faster = defaultdict(dict)
    for (family, case, size), (ratio, peer) in run.items():
        if ratio < 1:
            found[family, case].append(f"{size_name(size)} {ratio:.2f}")
            faster[family, case][peer] = None
    if not found:
        return ["Nowhere."]
    return [
        f"- {family}, {case} ({', '.join(faster[family, case])}): {', '.join(cells)}"
        for (family, case), cells in found.items()
    ]


def measured_part(as_is_path, sse2_path):
    as_is, sse2 = read_ratios(as_is_path), read_ratios(sse2_path)
    families = list(dict.fromkeys(key[0] for key in sse2))
    held, free = fastest_peers(sse2), fastest_peers(as_is)
    lines = ["## Machine", "", *machine(), "", "## Summary", "", *summary(families, held, free)]
    lines += ["", "## Ratios", "", "Held to SSE2 first, in brackets as it is; bold where we are behind."]
    lines += ["Of several peers the fastest, where the columns are sizes."]
    for family in families:
        lines += family_table(family, sse2, as_is)
    lines += ["", "## Where we are behind the C library held to SSE2", "", *behind(held)]
    lines += ["", "## Where we are behind the C library as it is", "", *behind(free)]
    return "\n".join(lines)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    as_is_path, sse2_path, document_path = sys.argv[1:]
    with open(document_path) as file:
        document = file.read()
    replaced, count = re.subn(
        re.escape(BEGIN) + ".*?" + re.escape(END),
        lambda _: f"{BEGIN}\n\n{measured_part(as_is_path, sse2_path)}\n\n{END}",
        document,
        flags=re.DOTALL,
    )
    if count != 1:
        sys.exit(f"{document_path} must have the two marker lines once")
    with open(document_path, "w") as file:
        file.write(replaced)


if __name__ == "__main__":
    main()
