# SPDX-License-Identifier: MIT
"""Takes the whole programs out of the guides: guide_programs.py FOLDER TARGET

A block "c" or "cpp" with a main function is a program; a block "output" after it is what it prints.
Prints "NAME SUFFIX" for each, and leaves TARGET/NAME.SUFFIX and TARGET/NAME.output.
"""

import pathlib
import re
import sys

BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)


def leave(path, text):
    if not path.exists() or path.read_text() != text:
        path.write_text(text)


folder, target = map(pathlib.Path, sys.argv[1:])
target.mkdir(parents=True, exist_ok=True)
for guide in sorted(folder.glob("*.md")):
    programs = []
    isProgram = False
    for kind, text in BLOCK.findall(guide.read_text()):
        if kind == "output" and isProgram:
            leave(target / f"{programs[-1]}.output", text)
        isProgram = kind in ("c", "cpp") and "int main(" in text
        if isProgram:
            programs.append(f"guide_{guide.stem.replace('-', '_')}_{len(programs) + 1}")
            leave(target / f"{programs[-1]}.{kind}", text)
            print(programs[-1], kind)
