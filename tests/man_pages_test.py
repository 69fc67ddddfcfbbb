# SPDX-License-Identifier: MIT
"""The manual pages: man_pages_test.py TREE: each exported function has one, and man has nothing to
say against any of them."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile


def main():
    tree = pathlib.Path(sys.argv[1])
    names = re.findall(r"^\d+ (\w+)$", (tree / "frame/exports.list").read_text(), re.M)
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([sys.executable, "-B", tree / "tools/man_pages.py", tree / "include", folder,
                        "1.2.3"], check=True)
        pages = sorted(pathlib.Path(folder).iterdir())
        faults = [f"no page for {name}" for name in names
                  if not pathlib.Path(folder, name + ".3").exists()]
        if shutil.which("groff"):
            for page in pages:
                done = subprocess.run(["groff", "-man", "-Tascii", "-P-cbou", "-ww", "-rLL=100n", page], text=True,
                                      capture_output=True, check=False)
                if done.stderr or done.returncode != 0:
                    faults.append(done.stderr)
                for part in ("NAME", "SYNOPSIS", "DESCRIPTION"):
                    if part not in done.stdout:
                        faults.append(f"{page.name}: no {part}")
        for page in pages:  # what whatis reads
            if not re.search(r"^\.SH NAME\n\S+ \\- \S.{3,100}$", page.read_text(), re.M):
                faults.append(f"{page.name}: a name line that is empty or too long")
    print("\n".join(faults) or f"{len(pages)} pages")
    return bool(faults) or not names


if __name__ == "__main__":
    sys.exit(main())
