#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The checker of what sources take in: on small houses that break one rule each, then on ours."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tools"))
import include_graph

GOOD = {"a/one.h": '#include "b/two.h"\n', "b/two.h": '#include "b/three.h"\n', "b/three.h": ""}
DRAWN = {("a", "b")}

assert not include_graph.find_flaws(GOOD, DRAWN, DRAWN)
for third, arrows, picture, flaw in (
    ('#include "b/two.h"\n', DRAWN, DRAWN, "a circle of files through b/t"),
    ('#  include "a/one.h"\n', DRAWN, DRAWN, "a circle of folders through a"),
    ('#include "b/five.h"\n', DRAWN, DRAWN, "b/three.h takes in b/five.h, which is nowhere"),
    ("", set(), set(), "a takes in b, which is not drawn"),
    ("", {("b", "c")} | DRAWN, {("b", "c")} | DRAWN, "b takes in nothing of c"),
    ("", DRAWN, set(), "the picture is not made of the drawing"),
):
    flaws = include_graph.find_flaws({**GOOD, "b/three.h": third}, arrows, picture)
    assert any(flaw in each for each in flaws), (flaw, flaws)
sys.exit(include_graph.main())
