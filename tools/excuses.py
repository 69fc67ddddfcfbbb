# SPDX-License-Identifier: MIT
"""Lists of what checks of the sources excuse: a paragraph for each line of them, with the file and
the line's text, then a line for each excuse, whose parts " | " separates. Lines that begin with "#"
are comments.
"""

import pathlib


def read(path, parts):
    """Each excuse: file, text of the line, and the excuse in so many parts. Those that hold " | "
    themselves come first."""
    position = []
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        if not line.strip():
            position = []
        elif line.startswith("#"):
            continue
        elif len(position) < 2:
            position.append(line.strip())
        else:
            yield (*position, *(part.strip() for part in line.rsplit(" | ", parts - 1)))
