# SPDX-License-Identifier: MIT
"""Tests of the example program vektext, run as a program.

  table    arguments and inputs with what must come of them
  random   small inputs and all kinds of options, against a naive model
  buffers  characters and lines across the ends of its buffers, compared with Python's codecs
  streams  more than 2^31 bytes through a pipe, in bounded memory

Usage: vektext_test.py --program PATH [--emulator PATH] [--bounded] [unittest arguments]
"""

import codecs
import os
import random
import subprocess
import tempfile
import time
import unittest

from example_program import (OPTIONS, expect_failing_output, expect_table, few, limited, main,
                             open_terminal, run)

BUFFER = 128 << 10  # the largest of its buffers, a multiple of the others
CODECS = {"utf8": "utf-8", "utf16le": "utf-16-le", "utf16be": "utf-16-be", "latin1": "latin-1"}
USAGE = r"\nUsage: vektext .*\n.*--help.*\n"
HELP = rb"Usage: vektext \[OPTION\].*--hash=shift\|sj2\|mscs.*"
SOME = "aß€𝄞\n"
LE, BE = SOME.encode("utf-16-le"), SOME.encode("utf-16-be")

# As expect_table takes them.
TABLE = [
    # Encodings.
    ("", b"a\xff\0\n", b"a\xff\0\n", "", 0),
    ("--to utf16le", SOME.encode(), LE, "", 0),
    ("--to=utf16be", SOME.encode(), BE, "", 0),
    ("--from utf16be", BE, SOME.encode(), "", 0),
    ("--from utf16be --to utf16le", BE, LE, "", 0),
    ("--to utf16le", b"\xc3", b"\xc3\0", "", 0),
    ("--to utf16be", b"\xff\xe2\x82A\xc3", b"\0\xff\0\xe2\0\x82\0A\0\xc3", "", 0),
    ("--from utf16le", b"\x34\xd8a\0\x34\xd8", b"\xed\xa0\xb4a\xed\xa0\xb4", "", 0),
    ("--from utf16be", b"\0a\xdd\x1e\xd8", b"a\xed\xb4\x9e",
     "vektext: standard input: half a UTF-16 unit .* offset 4\n", 2),
    ("--from utf16le --hash shift", b"a\0\n\0b", b"00000061\n",
     "vektext: standard input: line 2: half .* offset 4\n", 2),
    ("--from latin1", bytes(range(256)), bytes(range(256)).decode("latin-1").encode(), "", 0),
    ("--to latin1", "aß\xff\n".encode(), b"a\xdf\xff\n", "", 0),
    ("--to latin1", "€a𝄞\xe9".encode(), b"?a?\xe9", "vektext: 2 characters are not in Latin-1\n", 2),
    # Byte order marks: obeyed and dropped, and written if asked for.
    ("", b"\xef\xbb\xbfa", b"a", "", 0),
    ("--from utf16le", b"\xff\xfea\0", b"a", "", 0),
    ("--to utf16le", b"\xfe\xff" + BE, LE, "", 0),
    ("--from latin1 --to latin1", b"\xef\xbb\xbf", b"\xef\xbb\xbf", "", 0),
    ("--bom", b"", b"\xef\xbb\xbf", "", 0),
    ("--bom", b"\xef\xbb\xbfa", b"\xef\xbb\xbfa", "", 0),
    ("--bom --to utf16be", b"a", b"\xfe\xff\0a", "", 0),
    ("--bom --to utf16le --from utf16le", b"\xfe\xff" + BE, b"\xff\xfe" + LE, "", 0),
    ("--from utf16be", b"\xef\xbb\xbf\xc3\x9f", b"\xc3\x9f", "", 0),
    ("--bom --from utf16be", b"\xfe", b"\xef\xbb\xbf", "vektext: .* offset 0\n", 2),
    ("--bom --hash shift", b"\xff\xfe\x01\x02", b"00000111\n", "", 0),
    # Lines, fields, letters.
    (["--trim", r" \t\r"], b" \t a b\t\r\n\r\n  x ", b"a b\n\nx", "", 0),
    (["--trim", r"\x62\\\n"], b"\\abab\n\nb\\\nb\n", b"aba\n\n\n\n", "", 0),
    (["--trim", ""], b" a \n", b" a \n", "", 0),
    ("-d , -f 2", b"a,b,c\n,,\nd\n\n,e", b"b\n\nd\n\ne", "", 0),
    ("-f1", b"a,b\tc\n\td\ne\n", b"a,b\n\ne\n", "", 0),
    (["-s", "-d", r"\x00", "--fields", "1000000"], b"\0" * 999999 + b"a\n\nb\n", b"a\n", "", 0),
    ("--fields=2-3,5- --join + --delimiter=-", b"a-b-c-d-e-f\na-b-\na-\n", b"b+c+e+f\nb+\n\n", "", 0),
    ("-f -2,4 -f3 --lower -d -", b"A-B-C-D-E\nAB--CD-\n", b"a-b-c-d\nab--cd-\n", "", 0),
    ("--upper", "aß€z\x7f{\n".encode(), "Aß€Z\x7f{\n".encode(), "", 0),
    (["--replace-byte", ";,", "--replace-byte", r",\t"], b"a;b,c\n", b"a\tb\tc\n", "", 0),
    # Order of the steps, and hashes.
    ("--to utf16be --upper -f 1 -dx --trim x --replace-byte X_", b"xxabXxcd\n", b"\0A\0B\0_\0\n", "", 0),
    ("--hash shift", b"abc\n\nb\r", b"00000123\n00000000\n000000c9\n", "", 0),
    ("--hash sj2", b"abc\n", b"00017862\n", "", 0),
    ("--hash mscs --lower", b"ABC\nabc\0d\n", 2 * (b"%08x\n" % 193409669), "", 0),
    ("--hash shift", b"", b"", "", 0),
    # The command line.
    ("--help", b"", HELP + b"Exit status:.*", "", 0),
    ("-V", b"", b"vektext of vekch .*", "", 0),
    ("--generate bash-completion", b"", b"# Completes .*complete -F _vektext vektext\n.*", "", 0),
    ("-x", b"", b"", "vektext: unknown option '-x'" + USAGE, 2),
    ("--to latin2", b"", b"", "vektext: 'latin2' is not utf8, utf16le, utf16be or latin1" + USAGE, 2),
    ("--trim ä", b"", b"", "vektext: 'ä' is not ASCII; .*" + USAGE, 2),
    (["--trim", r"\q"], b"", b"", r"vektext: unknown escape in '\\q'" + USAGE, 2),
    (["--trim", r"\x4"], b"", b"", r"vektext: unknown escape in '\\x4'" + USAGE, 2),
    (["--trim", "\\"], b"", b"", r"vektext: unknown escape in '\\'" + USAGE, 2),
    ("-d ab -f 1", b"", b"", "vektext: 'ab' is not one byte to split at" + USAGE, 2),
    ("--replace-byte a", b"", b"", "vektext: 'a' is not a byte and .*" + USAGE, 2),
    ("-d a", b"", b"", "vektext: -d, -s and --join are for fields: they need -f" + USAGE, 2),
    *((["-f", n], b"", b"", f"vektext: '{n}' is not a list of fields, .*" + USAGE, 2)
      for n in ("", "0", "1x", "-", "3-2", "1,,2", "0-")),
    ("--lower --upper", b"", b"", "vektext: --lower and --upper exclude each other" + USAGE, 2),
    ("--hash crc", b"", b"", "vektext: 'crc' is not shift, sj2 or mscs" + USAGE, 2),
    ("--hash sj2 --to utf8", b"", b"", "vektext: --hash and --to exclude each other" + USAGE, 2),
]


class Table(unittest.TestCase):
    def test_table(self):
        expect_table(self, TABLE)

    def test_output_that_fails(self):
        expect_failing_output(self, b"vektext", ["--bom"])

    def test_files(self):
        with tempfile.TemporaryDirectory() as folder:
            names = [os.path.join(folder, name) for name in ("a", "b", "c")]
            for name, content in zip(names, (b"1,2", b"\xff\xfe" + LE, b"3,4\n")):
                with open(name, "wb") as file:
                    file.write(content)
            gone = os.path.join(folder, "gone")
            for arguments, stdout in (([], b"1,2" + SOME.encode() + b"3,4\n"),
                                      (["-f2", "-d,"], b"2\n" + SOME.encode() + b"4\n")):
                done = run(arguments + names + [gone])
                self.assertEqual(done.stdout, stdout)
                self.assertIn(b"gone: No such file", done.stderr)
                self.assertEqual(done.returncode, 2)
            self.assertEqual(run(["--upper", names[2], "-", names[2]], b"x").stdout, b"3,4\nX3,4\n")

    def test_terminal(self):
        controller, terminal = open_terminal(self)
        os.write(controller, b"ab\n\4")
        done = run(["--upper"], terminal)
        self.assertEqual(done.stdout, b"AB\n")
        self.assertEqual(done.stderr, b"vektext: reading what you type; end it by Ctrl-D\n")

    def test_own_output(self):
        with tempfile.TemporaryFile() as file:
            file.write(b"text")
            file.seek(0)
            done = run([], file, stdout=file)
        self.assertEqual(done.stderr, b"vektext: standard input: the file is also the output\n")
        self.assertEqual(done.returncode, 2)


class Random(unittest.TestCase):
    def test_like_model(self):
        chance = random.Random(5)
        for _ in range(few(300)):
            text = "".join(chance.choices("aAzZ ,,;\t\r\n\nß€𝄞", k=chance.choice((0, 3, 30, 300))))
            source, arguments, lines = chance.choice(list(CODECS)[:3]), [], text.encode().split(b"\n")
            arguments += ["--from", source]
            if chance.random() < 0.5:
                arguments += ["--trim", r" ,\t\r"]
                lines = [line.strip(b" ,\t\r") for line in lines]
            if chance.random() < 0.5:
                first, last = sorted(chance.choices(range(1, 5), k=2))
                arguments += ["-f", f"{first}-{last}", "--delimiter=,", "--join=+"]
                lines = [b"+".join(line.split(b",")[first - 1:last]) if b"," in line else line
                         for line in lines]
            if chance.random() < 0.5:
                upper = chance.random() < 0.5
                arguments += ["--upper" if upper else "--lower"]
                lines = [line.upper() if upper else line.lower() for line in lines]
            if chance.random() < 0.3:
                arguments += ["--hash", "sj2"]
                lines = lines if text[-1:] not in ("", "\n") else lines[:-1]
                expected = b""
                for line in lines:
                    value = 0
                    for byte in line:
                        value = (value * 31 + byte) & 0xFFFFFFFF
                    expected += b"%08x\n" % value
            else:
                target = chance.choice(list(CODECS)[:3])
                arguments += ["--to", target]
                expected = b"\n".join(lines).decode().encode(CODECS[target])
            done = run(arguments, text.encode(CODECS[source]))
            self.assertEqual((done.stdout, done.stderr), (expected, b""), (arguments, text))


def as_latin(error):
    """Takes one byte that is malformed for the character of its value, and goes on after it."""
    return error.object[error.start:error.start + 1].decode("latin-1"), error.start + 1


codecs.register_error("as latin", as_latin)


class Buffers(unittest.TestCase):
    def convert(self, arguments, stdin, expected, where):
        done = run(arguments, stdin)
        same = done.stdout == expected
        self.assertTrue(same and not done.stderr, (where, arguments, len(done.stdout), done.stderr))

    def test_characters_across_the_ends_of_buffers(self):
        for character in "ß€𝄞":
            size = len(character.encode())
            for shift in range(size):
                # Each buffer's end falls at the same position within the character.
                text = "x" * shift + character * (2 * BUFFER // size + 9) + "\ny"
                for name, codec in list(CODECS.items())[:4 if character == "ß" else 3]:
                    encoded = text.encode(codec)
                    where = (character, shift)
                    self.convert(["--to", name], text.encode(), encoded, where)
                    self.convert(["--from", name, "--trim", "x"], encoded,
                                 text.lstrip("x").encode(), where)

    def test_malformed_bytes_across_the_ends_of_buffers(self):
        pieces = [b"a", b"\n", b"\x80", b"\xc0", b"\xff", b"\xc3", b"\xe2\x82", b"\xf0\x9f\x98",
                  b"\xe0\x80", *(c.encode() for c in "ß€𝄞")]
        content = b"".join(random.Random(9).choices(pieces, k=3 * BUFFER))
        for cut in range(max(3, few(12))):
            text = content[cut:].decode("utf-8", "as latin")
            self.convert(["--to", "utf16be"], content[cut:], text.encode("utf-16-be"), cut)

    def test_single_bytes_as_they_come(self):
        if OPTIONS.emulator:
            self.skipTest("the emulated pipe can't be watched")
        import fcntl
        import termios
        for source, target in (("utf8", "utf16be"), ("utf16le", "utf8"), ("utf16be", "utf16le")):
            reader, writer = os.pipe()
            with subprocess.Popen([OPTIONS.program, "--from", source, "--to", target, "--bom"],
                                  stdin=reader, stdout=subprocess.PIPE) as program:
                deadline = time.monotonic() + 60
                for byte in ("\ufeff" + SOME * 3).encode(CODECS[source]):
                    os.write(writer, bytes((byte,)))
                    while any(fcntl.ioctl(reader, termios.FIONREAD, b"\0" * 4)):
                        if time.monotonic() > deadline:
                            program.kill()
                            self.fail("the program doesn't read on")
                        time.sleep(0.0001)
                os.close(writer)
                os.close(reader)
                self.assertEqual(program.stdout.read(), ("\ufeff" + SOME * 3).encode(CODECS[target]))

    def test_long_lines(self):
        line = bytes(random.Random(4).choices(b"abc,", k=5 * BUFFER))
        for length in (BUFFER - 1, BUFFER, BUFFER + 1, 5 * BUFFER):
            text = line[:length] + b";x;\n" + line
            self.convert(["-d", ";", "-f", "1"], text, line[:length] + b"\n" + line, length)

    def test_line_that_is_too_long(self):
        with tempfile.TemporaryFile() as file:
            file.write(b"first\n")
            file.truncate(260 << 20)
            file.seek(0)
            done = run(["--trim", "f"], file)
        self.assertEqual(done.stdout, b"irst\n")
        self.assertRegex(done.stderr, rb"^vektext: standard input: line 2: a line is longer .*\n$")
        self.assertEqual(done.returncode, 2)


class Streams(unittest.TestCase):
    def test_offset_behind_2_31(self):
        with open(os.devnull, "wb") as nowhere, \
                subprocess.Popen(["head", "-c", "2200000001", "/dev/zero"],
                                 stdout=subprocess.PIPE) as source:
            done = run(["--from", "utf16be", "--to", "utf16le", "--upper"], source.stdout,
                       stdout=nowhere, **limited())
        self.assertRegex(done.stderr, rb"^vektext: .* offset 2200000000\n$")


if __name__ == "__main__":
    main()
