# SPDX-License-Identifier: MIT
"""The SQLite extension in the real shell: sqlite_test.py SHELL EXTENSION [--times]

Each function on a table of cases, then a table of 100,000 rows, searched by the extension and by the
shell's own `regexp`, which must count alike. --times shows how long both take.
"""

import subprocess
import sys
import time
import unittest

SHELL, EXTENSION = sys.argv[1:3]

ROWS = """
CREATE TEMP TABLE log AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 100000)
SELECT printf('10.%d.%d.%d - - [22/Nov/2026:03:%02d:%02d] "GET /item/%d?q=%x HTTP/1.1" %d %d',
  i % 7, i % 251, i % 13, i / 60 % 60, i % 60, i * 7919 % 5000, i * 2654435761 % 65536,
  CASE WHEN i % 11 = 0 THEN 404 WHEN i % 97 = 0 THEN 500 ELSE 200 END, i * 31 % 9000) AS line FROM n;
"""
SEARCHES = [r"500 \d+$", r"/item/4[0-9]+.q=ab", r"\b10\.3\.[0-9]+\.12 ", "nothing like it",
            r'"GET [^"]*q=(ff|ee)[0-9a-f]+ HTTP']
EXPRESSIONS = [
    ("'abc' REGEXP 'b+'", "1"),
    ("'abc' REGEXP '^b'", "0"),
    ("NULL REGEXP 'b' IS NULL", "1"),
    ("'b' REGEXP NULL IS NULL", "1"),
    ("regexp_count('a1 b2 é3', '\\d')", "3"),
    ("regexp_count('é', '')", "2"),
    ("regexp_substr('key=value', '=.*')", "=value"),
    ("regexp_substr('key=value', '(\\w+)=(\\w+)', 2)", "value"),
    ("regexp_substr('key', '=') IS NULL", "1"),
    ("regexp_substr('key', '(k)|(x)', 2) IS NULL", "1"),
    ("regexp_substr('key', '(k)', -1) IS NULL", "1"),
    ("regexp_replace('Ada Lovelace', '(\\w+) (\\w+)', '$2, $1')", "Lovelace, Ada"),
    ("regexp_replace('aAa', 'a', 'x', 'i')", "xxx"),
    ("split_part('a,b,,d', ',', 2)", "b"),
    ("split_part('a,b,,d', ',', 3) = ''", "1"),
    ("split_part('a,b', ',', 3) IS NULL", "1"),
    ("split_part('a, b', ', ', 2)", "b"),
    ("split_part('a', ',', 0) IS NULL", "1"),
    ("trim_any('--=a-b=-', '-=')", "a-b"),
    # Patterns and options that change from row to row.
    ("(SELECT group_concat(regexp_replace('aA', p, 'x', o)) FROM (SELECT 'a' AS p, '' AS o UNION ALL "
     "SELECT 'a', 'i' UNION ALL SELECT 'A', ''))", "xA,xx,ax"),
    ("(SELECT group_concat(regexp_replace('aA', 'a', 'x', o)) FROM (SELECT '' AS o UNION ALL "
     "SELECT 'i' UNION ALL SELECT ''))", "xA,xx,xA"),
]
FAULTS = [("'a' REGEXP '(a'", "missing )"), ("regexp_replace('a', 'a', '$x')", "needs a group"),
          ("regexp_count('a', 'a++')", "possessive")]


def shell(script, extension=True):
    load = f".load {EXTENSION}\n" if extension else ""
    return subprocess.run([SHELL, "-batch", ":memory:"], input=load + script, capture_output=True,
                          text=True, check=False)


class Sqlite(unittest.TestCase):
    def test_functions(self):
        done = shell("".join(f"SELECT {expression};\n" for expression, _ in EXPRESSIONS))
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.stdout.splitlines(), [wanted for _, wanted in EXPRESSIONS])
        for expression, cause in FAULTS:
            self.assertIn(cause, shell(f"SELECT {expression};\n").stderr)

    def test_beside_the_shells_own(self):
        searches = "".join(f"SELECT count(*) FROM log WHERE line REGEXP '{s}';\n" for s in SEARCHES)
        own = shell(ROWS + searches, extension=False)
        ours = shell(ROWS + searches)
        self.assertEqual(ours.stderr, "")
        self.assertEqual(len(ours.stdout.splitlines()), len(SEARCHES))
        if not own.stderr:  # a shell may come without it
            self.assertEqual(ours.stdout, own.stdout)


def show_times():
    empty = [min(timed(ROWS, own) for _ in range(3)) for own in (False, True)]
    for search in SEARCHES:
        script = ROWS + f"SELECT count(*) FROM log WHERE line REGEXP '{search}';\n" * 5
        ours, own = (min(timed(script, not mine) for _ in range(5)) - empty[i]
                     for i, mine in enumerate((True, False)))
        print(f"{search:40} ours {ours * 200:6.1f} ms, the shell's own {own * 200:6.1f} ms")


def timed(script, own):
    start = time.perf_counter()
    shell(script, extension=not own)
    return time.perf_counter() - start


if __name__ == "__main__":
    if "--times" in sys.argv:
        show_times()
    else:
        unittest.main(argv=sys.argv[:1])
