#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Which source takes in which: no circle, and between folders along the arrows of docs/house.dot.

A folder takes in what its arrows lead to, in one step or in more, and each arrow is there for
something taken in. docs/house.svg is the picture of docs/house.dot.
"""

import graphlib
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("frame", "strings", "unicode", "regexp", "include")


def read_sources():
    return {
        str(path.relative_to(ROOT)): path.read_text(encoding="utf-8")
        for folder in FOLDERS
        for path in sorted((ROOT / folder).rglob("*"))
        if path.suffix in (".h", ".cpp")
    }


def read_drawing(text):
    """The arrows of a drawing: "a" -> "b" and "a" -> { "b" "c" }."""
    arrows = set()
    for tail, heads in re.findall(r'"([^"]+)" -> (\{[^}]*\}|"[^"]+")', text):
        arrows |= {(tail, head) for head in re.findall(r'"([^"]+)"', heads)}
    return arrows


def read_picture(text):
    titles = re.findall(r"<title>([^<]+)&#45;&gt;([^<]+)</title>", text)
    return {tuple(name.replace("&#45;", "-") for name in title) for title in titles}


def find_circle(arrows):
    """The nodes of a circle, or None."""
    sorter = graphlib.TopologicalSorter()
    for tail, head in arrows:
        sorter.add(tail, head)
    try:
        sorter.prepare()
    except graphlib.CycleError as error:
        return min(error.args[1])
    return None


def reach(arrows):
    """The pairs that arrows lead from and to, in one step or in more."""
    reached = set(arrows)
    while True:
        more = {(a, d) for a, b in reached for c, d in arrows if b == c} - reached
        if not more:
            return reached
        reached |= more


def find_flaws(sources, drawing, picture):
    flaws = []
    files = set()
    for name, text in sources.items():
        for taken in re.findall(r'^# *include "([^"]+)"', text, re.MULTILINE):
            target = taken if taken in sources else "include/" + taken
            if target not in sources:
                flaws.append(f"{name} takes in {taken}, which is nowhere")
            files.add((name, target))
    folder = {name: name.rpartition("/")[0] for name in sources}
    folders = {(folder[a], folder.get(b, "?")) for a, b in files if folder[a] != folder.get(b)}
    for what, arrows in (("files", files), ("folders", folders)):
        circle = find_circle(arrows)
        if circle is not None:
            flaws.append(f"a circle of {what} through {circle}")
    flaws += [f"{a} takes in {b}, which is not drawn" for a, b in sorted(folders - reach(drawing))]
    flaws += [f"{a} takes in nothing of {b}" for a, b in sorted(drawing - folders)]
    if picture != drawing:
        flaws.append("the picture is not made of the drawing")
    return flaws


def main():
    sources = read_sources()
    drawing = read_drawing((ROOT / "docs" / "house.dot").read_text(encoding="utf-8"))
    picture = read_picture((ROOT / "docs" / "house.svg").read_text(encoding="utf-8"))
    flaws = find_flaws(sources, drawing, picture)
    print("\n".join(flaws) or f"{len(sources)} sources, {len(drawing)} arrows between folders")
    return 1 if flaws or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
