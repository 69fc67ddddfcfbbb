# SPDX-License-Identifier: MIT
"""The Python package beside Python's own `re`, where both mean the same, and where they don't."""

import contextlib
import doctest
import io
import pathlib
import random
import re
import threading
import unittest

import vekch

PATTERNS = ["a", "ab*", "(a)|(b)", r"(\w)(\d)?", "[ab]+c?", "(a+)(b*)", "x*", r"\bb", "^a|b$",
            "a(?=b)", "(?<=a)b", "(?:ab|a)c", r"(a)\1", "é", "[é€]+", "(.)é", "."]


class VekchTest(unittest.TestCase):
    def test_as_re(self):
        chance = random.Random(1)
        for _ in range(300):
            text = "".join(chance.choices("aabbcx1 é€😀\n", k=chance.randrange(30)))
            for pattern in PATTERNS:
                for subject, own in ((text, pattern), (text.encode(), pattern.encode())):
                    if isinstance(subject, bytes) and not pattern.isascii():
                        continue
                    flags = re.ASCII if isinstance(subject, str) else 0
                    options = "" if isinstance(subject, str) else "b"
                    wanted = [[m.span(i) for i in range(len(m.groups()) + 1)]
                              for m in re.finditer(own, subject, flags)]
                    found = vekch.find_all(own, subject, options)
                    self.assertEqual([[m.span(i) for i in range(len(m))] for m in found], wanted,
                                     (own, subject))
                    first = vekch.find(own, subject, options)
                    self.assertEqual(first and first.span(), wanted[0][0] if wanted else None)
                    self.assertEqual([m[0] for m in found],
                                     [m[0] for m in re.finditer(own, subject, flags)])
                    if not pattern.count("("):
                        self.assertEqual(vekch.split(own, subject, options),
                                         re.split(own, subject, flags=flags))
                        mark = "<$&>" if isinstance(subject, str) else b"<$&>"
                        slot = r"<\g<0>>" if isinstance(subject, str) else rb"<\g<0>>"
                        self.assertEqual(vekch.sub(own, mark, subject, options),
                                         re.sub(own, slot, subject, flags=flags))

    def test_sub(self):
        self.assertEqual(vekch.sub(r"(\w+)=(\w+)?", "$2:$1$9", "a=1 é=2 b="), "1:a é=2 :b")
        self.assertEqual(vekch.sub("a", "é", "banana", count=2), "bénéna")
        self.assertEqual(vekch.sub(r"\d", lambda m: str(int(m[0]) + 1) + "$1", "a1"), "a2$1")
        with self.assertRaises(vekch.Error):
            vekch.sub("a", "$x", "a")
        with self.assertRaises(TypeError):
            vekch.sub(b"a", b"b", "a")

    def test_fault(self):
        with self.assertRaises(vekch.Error) as caught:
            vekch.compile("é(?<n>x)")
        fault = caught.exception
        self.assertEqual((fault.cause, fault.offset), ("named groups are not supported", 4))
        self.assertEqual(str(fault), "named groups are not supported\n  é(?<n>x)\n      ^")
        for source, options in (("a\0", ""), ("a", "y")):
            with self.assertRaises(vekch.Error):
                vekch.compile(source, options)
        with self.assertRaises(vekch.MatchLimitError):
            vekch.compile("(?:(a)(b))+c", match_limit=8).find("abababababc")
        with self.assertRaises(ValueError):
            vekch.compile("a", match_limit=-1)

    def test_match(self):
        match = vekch.find("(é)(x)?", "aé")
        self.assertEqual((len(match), match[1], match[2], match.groups()), (3, "é", None, ("é", None)))
        self.assertEqual((match.start(), match.end(), match.span(2)), (1, 2, (-1, -1)))
        with self.assertRaises(IndexError):
            match[3]
        self.assertIsNone(vekch.find("b", "a"))
        many = vekch.find_all("(a)", "a" * 100000)
        self.assertEqual((len(many), many[-1].span()), (100000, (99999, 100000)))
        self.assertEqual(vekch.find("[a-z]", "\ud800b").start(), 1)

    def test_utf(self):
        text = "naïve 中文 😀"
        self.assertEqual(vekch.utf8_to_utf16(text.encode()), text.encode("utf-16-le"))
        self.assertEqual(vekch.utf16_to_utf8(text.encode("utf-16-le")), text.encode())
        self.assertEqual(vekch.utf16_to_utf8(text.encode("utf-16-be"), True), text.encode())
        self.assertEqual(vekch.utf8_to_utf16(b"\xff\xf0\x9f"), b"\xff\0\xf0\0\x9f\0")
        self.assertEqual(vekch.utf8_to_utf16(b""), b"")

    def test_threads(self):
        pattern = vekch.compile(r"(\w)\d")
        counts = []

        def work():
            counts.append(sum(len(pattern.find_all("a1 b2 c3 " * 50)) for _ in range(50)))

        threads = [threading.Thread(target=work) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(counts, [7500] * 4)

    def test_documentation(self):
        self.assertEqual(doctest.testmod(vekch).failed, 0)
        readme = pathlib.Path(__file__).parent.parent / "README.md"
        if readme.exists():
            out = io.StringIO()
            with contextlib.redirect_stdout(out):
                exec(re.search("```python\n(.*?)```", readme.read_text(), re.S)[1], {})
            self.assertEqual(out.getvalue(), "width 640 (0, 9)\nheight 480 (11, 21)\nAda Lovelace\n"
                                             "missing )\n  (ab\n     ^\n")


if __name__ == "__main__":
    unittest.main()
