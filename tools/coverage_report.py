#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Sums up which lines and branches of the library the tests went through, as gcov has counted them.

    tools/coverage_report.py BUILD [--list]

--list names every line and branch that was missed, not only those without a reason

How it is counted. A branch is a way that a conditional jump can take, as g++ makes them of the
sources before it optimises: two for each comparison and for each side of && and ||, one for each
case. Instances of a template and copies of an inlined function count once: a line's branches are
united over all of its copies that have as many of them; where copies have different numbers, since
a template's constant has decided some, those with the most count. What tools/coverage_excused.txt
lists by file and text of the line counts as if it were reached; it has to be missed, or it is
named, unless "maybe" says that it depends on the processor. Ends with 1 where a figure is below its
threshold.
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys

import excuses

ROOT = pathlib.Path(__file__).resolve().parent.parent
EXCUSED = ROOT / "tools" / "coverage_excused.txt"
FOLDERS = ("frame", "regexp", "strings", "unicode")
# Thresholds in percent, of branches and of lines.
WANTED = dict.fromkeys(("regexp", "strings", "unicode"), (97, 99.5))


def gcov(counts):
    """What one object's counts hold, for the sources of the library."""
    done = subprocess.run(["gcov", "--json-format", "--stdout", "-b", counts.name],
                          cwd=counts.parent, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          check=True)  # fmt: skip
    for line in done.stdout.splitlines():
        unit = json.loads(line)
        for file in unit["files"]:
            path = pathlib.Path(unit["current_working_directory"], file["file"]).resolve()
            if path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in FOLDERS:
                yield str(path.relative_to(ROOT)), file["lines"]


class Line:
    def __init__(self):
        self.count = 0
        self.copies = collections.defaultdict(dict)  # number of branches: whether each was taken

    def add(self, entry):
        self.count += entry["count"]
        branches = [branch for branch in entry["branches"] if not branch["throw"]]
        taken = self.copies[len(branches)]
        for i, branch in enumerate(branches):
            taken[i] = taken.get(i, False) or branch["count"] > 0

    def branches(self):
        return list(self.copies[max(self.copies)].values())


def collect(build):
    lines = collections.defaultdict(Line)
    counted = sorted((build / "CMakeFiles" / "vekch_objects.dir").rglob("*.gcda"))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for found in pool.map(lambda path: list(gcov(path)), counted):
            for file, entries in found:
                for entry in entries:
                    lines[file, entry["line_number"]].add(entry)
    return lines


def read_excused():
    """By file and text of the line: how many branches may be missed, and whether they may be
    reached as well."""
    excused = {}
    for file, text, missed, _ in excuses.read(EXCUSED, 2):
        count = missed.removeprefix("maybe ")
        excused[file, text] = (0 if count == "line" else int(count), count != missed)
    return excused


def main():
    if len(sys.argv) < 2:
        print(__doc__)
        return 2
    everything = "--list" in sys.argv
    lines = collect(pathlib.Path(sys.argv[1]).resolve())
    excused = read_excused()
    used = set()
    sums = collections.defaultdict(lambda: [0, 0, 0, 0, 0])  # branches and lines, all and reached
    texts = {file: (ROOT / file).read_text(encoding="utf-8").splitlines() for file, _ in lines}
    for (file, number), line in sorted(lines.items()):
        text = texts[file][number - 1].strip()
        branches = line.branches()
        missed = len(branches) - sum(branches)
        key = (file, text)
        if (missed or not line.count) and key in excused:
            used.add(key)
        allowed = excused.get(key, (-1, False))[0]
        fine = missed <= allowed or (missed == 0 and line.count > 0)
        total = sums[file.split("/")[0]]
        total[0] += len(branches)
        total[1] += sum(branches)
        total[2] += 1
        total[3] += 1 if line.count or key in excused else 0
        total[4] += min(missed, max(allowed, 0)) if missed else 0
        if (missed or not line.count) and (everything or not fine):
            print(f"{file}:{number}: {missed} of {len(branches)} branches missed"
                  f"{', line missed' if not line.count else ''}\n    {text}")  # fmt: skip
    unused = sorted(key for key, (_, maybe) in excused.items() if key not in used and not maybe)
    for file, text in unused:
        print(f"excused, but reached or gone: {file}: {text}")
    enough = bool(lines) and not unused
    for folder, (branches, taken, count, reached, listed) in sorted(sums.items()):
        percents = (100 * (taken + listed) / max(1, branches), 100 * reached / count)
        wanted = WANTED.get(folder, (0, 0))
        below = any(percent < least for percent, least in zip(percents, wanted))
        enough = enough and not below
        print(f"{folder:8} {taken} of {branches} branches, {listed} listed: {percents[0]:.2f} %"
              f" (least {wanted[0]} %); {reached} of {count} lines: {percents[1]:.2f} %"
              f" (least {wanted[1]} %){'  BELOW' if below else ''}")  # fmt: skip
    return 0 if enough else 1


if __name__ == "__main__":
    sys.exit(main())
