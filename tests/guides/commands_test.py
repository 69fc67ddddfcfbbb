# SPDX-License-Identifier: MIT
"""Runs the commands of a guide: commands_test.py GUIDE FOLDER_OF_PROGRAMS

Each block "sh" is run in one folder, by bash, and must print the block "output" after it.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PAIR = re.compile(r"^```sh\n(.*?)^```\n```output\n(.*?)^```$", re.M | re.S)


def main():
    if not shutil.which("parallel"):
        print("SKIPPED: parallel isn't at hand")
        return 0
    guide, programs = sys.argv[1:]
    faults = count = 0
    with tempfile.TemporaryDirectory() as folder:
        for number in range(4):
            text = "".join(f"id={i} node={number} status={500 if i % 100 == 0 else 200}\n"
                           for i in range(1, 3001))
            pathlib.Path(folder, f"{number}.log").write_text(text)
        environment = dict(os.environ, PATH=programs + os.pathsep + os.environ["PATH"], HOME=folder)
        for command, wanted in PAIR.findall(pathlib.Path(guide).read_text()):
            done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True,
                                  capture_output=True, timeout=120, check=False)
            count += 1
            if done.stdout != wanted:
                faults += 1
                print(f"{command}printed\n{done.stdout}{done.stderr}instead of\n{wanted}")
    return faults != 0 or count == 0


if __name__ == "__main__":
    sys.exit(main())
