# SPDX-License-Identifier: MIT
"""Runs the small programs: programs_test.py FOLDER LIBRARY [EMULATOR]"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

FOLDER, LIBRARY, *EMULATOR = sys.argv[1:]

CSV = [
    (b" a , b,c \n", b"a,b,c\n"),
    (b"a,\n,\n\n", b"a,\n"),
    (b'"x, y" ,"say ""hi"""\r\n', b'"x, y","say ""hi"""\n'),
    (b'"plain", "" ,z\n', b"plain,,z\n"),
    (b'a" b,c\n', None),
    (b'"open,c\n', None),
]
LOG = (b'1.2.3.4 - - [22/Nov/2026:03:14:07 +0000] "GET /a HTTP/1.1" 200 10\n'
       b'1.2.3.5 - - [22/Nov/2026:03:14:08 +0000] "GET /b HTTP/1.1" 200 5\n'
       b'1.2.3.4 - - [22/Nov/2026:03:14:09 +0000] "POST /a HTTP/1.1" 404 -\n'
       b'noise\n')


def run(name, *arguments, stdin=b""):
    paths = list(pathlib.Path(FOLDER).glob(name + "*"))
    program = next(p for p in paths if p.name in (name, name + ".exe"))
    return subprocess.run([*EMULATOR, program, *arguments], input=stdin, timeout=120, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)


def lines(output):
    return output.replace(b"\r\n", b"\n")


class Programs(unittest.TestCase):
    def test_logstat(self):
        self.assertEqual(lines(run("logstat", stdin=LOG).stdout),
                         b"200 GET 2 15\n404 POST 1 0\nother lines: 1\n")

    def test_csvclean(self):
        for text, wanted in CSV:
            done = run("csvclean", stdin=text)
            self.assertEqual(done.returncode, 0 if wanted else 1, text)
            self.assertEqual(lines(done.stdout), wanted or b"", text)

    def test_rewrite(self):
        with tempfile.TemporaryDirectory() as folder:
            files = {f"f{i}/g{i % 3}": (f"name = v{i}\n" * i).encode() for i in range(20)}
            for name, text in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(exist_ok=True)
                path.write_bytes(text)
            done = run("rewrite", r"^(\w+) = (\w+)$", "$2: $1", folder)
            self.assertEqual(lines(done.stdout), b"190 matches replaced in 19 of 20 files\n")
            for i, name in enumerate(files):
                self.assertEqual(pathlib.Path(folder, name).read_bytes(),
                                 (f"v{i}: name\n" * i).encode())
            self.assertEqual(len([p for p in pathlib.Path(folder).rglob("*") if p.is_file()]), 20)
            self.assertEqual(run("rewrite", "(", "x", folder).returncode, 2)
            self.assertEqual(run("rewrite", "a", "$x", folder).returncode, 2)

    def test_atruntime(self):
        done = run("atruntime", LIBRARY)
        self.assertEqual(lines(done.stdout), b"m7: found at 3\n")
        self.assertEqual(run("atruntime", "nowhere").returncode, 2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
