# SPDX-License-Identifier: MIT
"""Tests of the example program vekgrep, run as a program.

  table     arguments and inputs with what must come of them
  grep      every option of GNU grep, run by both programs on the same texts
  random    small inputs, compared with the system's grep where the options mean the same, and with
            Python's patterns
  buffers   lines and occurrences across the ends of its buffer, against a naive model
  streams   more than 2^31 bytes through a pipe, in bounded memory
  threads   many files and one large one: the same output whatever the number of threads

Usage: vekgrep_test.py --program PATH [--emulator PATH] [--bounded] [unittest arguments]
"""

import os
import random
import re
import shutil
import signal
import subprocess
import tempfile
import unittest

import grep_options
from example_program import (OPTIONS, expect_failing_output, expect_table, few, limited, main,
                             open_terminal, run)

BUFFER = 128 << 10  # as in input.cpp; a pattern is at most a quarter of it


class InFolder(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.folder)
        self.write("a", b"one\ntwo\nThree\n")
        self.write("b", b"TWO two\r\nlast one")
        self.write("bin", b"one\0\ntwo\n\0three")
        self.write("late", b"two\n" + b"x\n" * BUFFER + b"two\0\ntwo\n")
        self.write("empty", b"")
        for name, mark, codec in (("le", b"\xff\xfe", "utf-16-le"), ("be", b"\xfe\xff", "utf-16-be"),
                                  ("utf32", b"\xff\xfe\0\0", "utf-32-le")):
            self.write(name, mark + "one\ntwo\n\ntöo\n".encode(codec))
        self.write("half", b"\xfe")
        os.mkdir("folder")
        os.makedirs("tree/a/z")
        for name, content in (("a/2", b"two\n"), ("a/z/3", b"two"), ("b", b"x")):
            self.write("tree/" + name, content)

    def write(self, name, content):
        with open(name, "wb") as file:
            file.write(content)


HELP = "Usage: vekgrep .*--color.*"
FAULT = "vekgrep: {}\n  .*"
USAGE = "\nUsage: vekgrep .*\n.*--help.*\n"
BINARY = "vekgrep: bin: binary file matches\n"
RED, MAGENTA, GREEN, CYAN = (lambda text, c=c: f"\33[{c}m{text}\33[m"
                             for c in ("01;31", "35", "32", "36"))
# Patterns, and which lines are searched for them.
LITERALS, WHOLE, EVERY = "lines with the text .*", "lines of matches in the whole text", "every line"
SHORT, ALONE = WHOLE + ", while lines are short", WHOLE + ", each then alone"
WAYS = (
    ("ab[^x]*", LITERALS), ("[^x]ab", LITERALS), ("a|b", LITERALS), ("(?i)ab", LITERALS),
    ("[ab]+$", WHOLE), ("^(a|b).\\w{2,}?\\b|\\S\\d", WHOLE), ("[^b\\n]", WHOLE), ("[^\\s]", WHOLE),
    (".(?!a)", WHOLE), ("(?<=a).", WHOLE), ("(.)\\1", WHOLE), ("(?>a*).", WHOLE), ("\\p{Lu}", WHOLE),
    ("\\p{Greek}\\P{Common}", WHOLE), ("([ab]\\d){1,3}\\w", WHOLE), ("(a|b)+[cd]", SHORT),
    ("((a|b)\\d)*[cd]", SHORT), ("[^a]", ALONE), ("[\\W_]\\d", ALONE), ("(.?)\\1[ab]", ALONE),
    ("[^a]*", EVERY), ("([^a]\\d)+", EVERY), ("[^a](?!b)", EVERY), ("\\P{Lu}+", EVERY), ("\\A.", EVERY),
    (".\\z", EVERY), ("(?s)..", EVERY), ("(?-m)^.", EVERY), ("a*?.", EVERY), ("(a)?(?(1)[ab]|[cd])", EVERY))
# As expect_table takes them.
TABLE = [
    # What GNU grep has as well is in grep_options.py.
    ("-F two", "x two\nx\n", "x two\n", "", 0),
    ("-inF two a b", "", "a:2:two\nb:1:TWO two\r\n", "", 0),
    ("-F -c -v x", "\n" * 100000, "100000\n", "", 0),
    (["t # in b\nwo", "--extended", "b"], "", "TWO two\r\n", "", 0),
    (["-o", "--single-line", "--multi-line", ".+"], "a\nb\n", "a\nb\n", "", 0),
    (["-z", "-o", "--single-line", "a.*"], "xab\nc\0d\0", "ab\nc\0", "", 0),
    (["-z", "-c", "--multi-line", "^b$"], "a\nb\0b\0bb\0", "2\n", "", 0),
    ("-x -o \\Qtwo", "two\ntwofold", "two\n", "", 0),
    ("-w --extended -o two#", "two\ntwofold", "two\n", "", 0),
    (["-o", "-n", "-e", "b.", "-e", "bcd|e", "-e", "x*"], "abcde xx\n", "1:bcd\n1:e\n1:xx\n",
     "", 0),
    ("-o ^.$", "\u00E9\nab\n", "\u00E9\n", "", 0),
    ("-o --bytes ^..$", "\u00E9\nab\n", "\u00E9\nab\n", "", 0),
    ("-o -i \\x{E9}+", "\u00E9\u00C9e", "\u00E9\u00C9\n", "", 0),
    (["--color=always", "t(w)|\\b"], "tw t\n", RED("tw") + " t\n", "", 0),
    ("--color=always --replace <$&> t b", "", "TWO <t>wo\r\nlas<t> one\n", "", 0),
    # Groups and replacements.
    (["--groups", "-n", "(t)(w)?|(?=(T))"], "two\nTt\n",
     "1:tw\n  $1: t\n  $2: w\n  $3 took no part\n2:\n  $1 took no part\n  $2 took no part\n"
     "  $3: T\n2:t\n  $1: t\n  $2 took no part\n  $3 took no part\n", "", 0),
    ("--groups -v t a", "", "", "", 0),
    (["--replace", "[$2$1$3]", "-n", "(\\w)(\\w)"], "abc d\nx\nefgh\n", "1:[ba]c d\n3:[fe][hg]\n", "", 0),
    (["--replace", "<$1\\0>", "x*"], "axx\n\n", "<0>a<0><0>\n<0>\n", "", 0),
    (["--replace", "", "[a-z]", "a"], "", "\n\nT\n", "", 0),
    (["-v", "--replace", "-", "e", "a"], "", "two\n", "", 0),
    (["--replace", "$&" * 500, "x+"], "x" * 1000, "x" * 500000 + "\n", "", 0),
    (["--replace", "$x", "a"], "", "", r"vekgrep: replacement '\$x': \"\$\" needs .*\n", 2),
    # The match limit.
    (["-n", "--limit", "12", "[a][b][c][d][e]|x"], "abcde\nx abc\nb\nx abcde",
     "2:x abc\n4:x abcde\n",
     r"vekgrep: \(standard input\):1: the match limit ran out\n", 2),
    (["-vn", "--limit", "12", "-e", "b", "-e", "[a][c][c][d][e]"], "accde\nb\nc\n",
     "1:accde\n3:c\n",
     r"vekgrep: \(standard input\):1: the match limit ran out\n", 2),
    ("-c --limit 0 e a b", "", "a:0\nb:0\n", "".join(
        f"vekgrep: {position}: the match limit ran out\n"
        for position in ("a:1", "a:2", "a:3", "b:1", "b:2")), 2),
    # Folders.
    ("-R -c w tree b", "", "tree/a/2:1\ntree/a/z/3:1\ntree/b:0\nb:1\n", "", 0),
    ("-R -l -F two tree", "", "tree/a/2\ntree/a/z/3\n", "", 0),
    ("-r x gone tree", "", "tree/b:x\n", "vekgrep: gone: No such file or directory\n", 2),
    # Binary files.
    ("-F two bin a", "", "a:two\n", BINARY, 0),
    ("t\\wo a bin", "", "a:two\n", BINARY, 0),
    ("-c e$ bin", "", "1\n", "", 0),
    ("-F -o two", "two\0", "", r"vekgrep: \(standard input\): binary file matches\n", 0),
    ("-F two late", "", "two\n", "vekgrep: late: binary file matches\n", 0),
    # UTF-16 with its mark; UTF-32 and halves of a mark are binary or text.
    ("-n t.o le be", "", "le:2:two\nle:4:töo\nbe:2:two\nbe:4:töo\n", "", 0),
    ("-c ^$ le", "", "1\n", "", 0),
    ("-v -F -h -e o -e ö le be", "", "\n\n", "", 0),
    ("-c . utf32 half", "", "utf32:5\nhalf:1\n", "", 0),
    # Files that can't be read.
    ("-F two none a", "", "a:two\n", "vekgrep: none: No such file or directory\n", 2),
    ("-F two folder a", "", "a:two\n", "vekgrep: folder: Is a directory\n", 2),
    ("-F -c two folder a", "", "a:1\n", "vekgrep: folder: Is a directory\n", 2),
    # What a pattern compiles to.
    (["--explain", "ab+"], "", "   0  OpChar byte='a'\n   1  OpChar byte='b'\n"
     "   2  OpGreedy minimum=1 maximum=unbounded\n"
     "   search mode 1, required literal 1, captures 1\n"
     "   matched: by the fast matcher\n"
     "   searched: lines with the text \"a\"\n", "", 0),
    (["-i", "--explain=(ab)"], "", "   0  OpCapture serial=1 extent=1 slot=1\n"
     "   1    OpString length=2 options=i \"ab\"\n   2  OpGroupEnd serial=1 options=i\n"
     "   search mode 0, required literal -1, captures 2\n"
     "   matched: by the fast matcher\n"
     "   searched: lines of matches in the whole text\n", "", 0),
    (["--explain", "\u00E9\tb)\nc"], "", "", "vekgrep: unmatched \\)\n  \u00E9\tb\\)\n   \t \\^\n", 2),
    (["-w", "x" * 50 + "\u00E9" * 20 + ")" + "y" * 90], "", "",
     r"vekgrep: unmatched \)\n  \.\.\.\u00E9{20}\)y{19}\.\.\.\n {25}\^\n", 2),
    # The command line.
    ("--help", "", HELP + "Exit status:.*", "", 0),
    ("--version", "", HELP[:0] + "vekgrep of vekch .*", "", 0),
    ("-G two a", "", "", "vekgrep: -G: basic patterns are not supported; .*" + USAGE, 2),
    ("--colo=never two a", "", "two\n", "", 0),
    ("--no-i --null-d -c -- -x a", "", "0\n", "", 1),
    ("--no two", "", "", "vekgrep: option '--no' could be any of --no-.* --no-.*" + USAGE, 2),
    ("-f gone", "", "", "vekgrep: gone: No such file.*" + USAGE, 2),
    ("-A x two", "", "", "vekgrep: 'x' is not a number" + USAGE, 2),
    ("--generate man", "", HELP[:0] + ".TH VEKGREP 1.*\\-A.*\\-\\-after\\-context.*EXIT STATUS.*", "", 0),
    ("-F", "", "", "vekgrep: nothing to search for" + USAGE, 2),
    ("--extended -F two", "", "", "vekgrep: .* not for fixed text .*" + USAGE, 2),
    ("-F --replace two one", "", "", "vekgrep: .* not for fixed text .*" + USAGE, 2),
    ("-o --groups two", "", "", "vekgrep: .* exclude each other" + USAGE, 2),
    ("--replace 1 -e 2 -e 3", "", "", "vekgrep: --replace takes one pattern" + USAGE, 2),
    ("--limit 100001 a", "", "", "vekgrep: '100001' is not a number up to 100000" + USAGE, 2),
    ("--limit 1x a", "", "", "vekgrep: '1x' is not .*" + USAGE, 2),
    ("-FQ two a", "", "", "vekgrep: unknown option '-Q'" + USAGE, 2),
    ("-F --coulour two", "", "", "vekgrep: unknown option '--coulour'" + USAGE, 2),
    ("-F --color=red two", "", "", "vekgrep: 'red' is not auto, always or never" + USAGE, 2),
    ("-F --count=3 two", "", "", "vekgrep: option '--count' takes no value" + USAGE, 2),
    ("-Fe", "", "", "vekgrep: option '-e' needs a value" + USAGE, 2),
]


PLAIN = {"NO_COLOR": "1", "TERM": "xterm", "GREP_COLORS": "ne"}


class Table(InFolder):
    def test_table(self):
        expect_table(self, TABLE, PLAIN)

    def test_ways(self):
        for pattern, way in WAYS:
            with self.subTest(pattern=pattern):
                self.assertRegex(run(["--explain", pattern]).stdout.decode(), f"searched: {way}\n\\Z")

    def test_texts_name_every_option(self):
        about, page, completion = (run(arguments).stdout.decode() for arguments in
                                   (["--help"], ["--generate=man"], ["--generate=bash-completion"]))
        names = re.findall(r"(?m)^ {2,6}(?:-(\w), )?--([-a-z]+)", about)
        self.assertGreater(len(names), 50)
        for letter, name in names:
            with self.subTest(name=name):
                self.assertIn("--" + name, completion)
                self.assertIn("\\fB--" + name, page)
                self.assertTrue(not letter or f"-{letter} --" in completion)

    def test_completion(self):
        if OPTIONS.emulator or not shutil.which("bash"):
            self.skipTest("needs bash")
        completion = run(["--generate=bash-completion"]).stdout
        for words, replies in (("--inc", ["--include"]), ("--color = al", ["always"]), ("-f la", ["late"]),
                               ("-r tr", ["tree"]), ("--binary-files = with", ["without-match"]),
                               ("-e t", [])):
            line = "COMP_WORDS=(vekgrep " + " ".join(f"'{word}'" for word in words.split()) + \
                "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vekgrep; printf '%s\\n' \"${COMPREPLY[@]}\""
            with self.subTest(words=words):
                done = subprocess.run(["bash", "-c", completion.decode() + line], check=False,
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                self.assertEqual(done.stdout.decode().split(), replies)

    def test_messages_keep_their_place(self):
        done = run(["-F", "-j3", "two", "a", "none", "b"], oneOutput=True)
        self.assertRegex(done.stdout, rb"^a:two\nvekgrep: none: .*\nb:TWO two\r\n$")

    def test_output_that_fails(self):
        expect_failing_output(self, b"vekgrep", ["-F", "two", "late"])
        self.assertEqual(run(["-q", "two", "a"], preexec_fn=lambda: os.close(1)).returncode, 0)

    def test_reader_that_leaves(self):
        if os.name != "posix":
            self.skipTest("needs signals")
        for ignored, message, status in ((False, b"", -signal.SIGPIPE), (True, b"vekgrep: standard output: Broken pipe\n", 2)):
            reader, writer = os.pipe()
            os.close(reader)
            handler = signal.SIG_IGN if ignored else signal.SIG_DFL
            done = run(["-F", "two", "late"], stdout=writer,
                       preexec_fn=lambda h=handler: signal.signal(signal.SIGPIPE, h))
            os.close(writer)
            if not OPTIONS.emulator:
                self.assertEqual((done.stderr, done.returncode), (message, status))

    def test_own_output(self):
        with open("a", "ab") as file:
            done = run(["-F", "o", "b", "a"], stdout=file)
        self.assertEqual(done.stderr, b"vekgrep: a: the file is also the output\n")
        self.assertEqual(done.returncode, 2)

    def test_terminal(self):
        for environment, color in (({"TERM": "xterm", "NO_COLOR": ""}, True),
                                   ({"TERM": "dumb", "NO_COLOR": ""}, False),
                                   ({"TERM": "xterm", "NO_COLOR": "1"}, False)):
            controller, terminal = open_terminal(self)
            with self.subTest(environment=environment):
                run(["-F", "two", "a"], environment=dict(environment, GREP_COLORS="ne"), stdout=terminal)
                shown = os.read(controller, 1000)
                self.assertEqual(shown, ((RED("two") if color else "two") + "\r\n").encode())

    def test_progress(self):
        controller, terminal = open_terminal(self)
        with subprocess.Popen(["sh", "-c", "echo one; sleep 1.1; echo two"],
                              stdout=subprocess.PIPE) as source:
            done = run(["-c", "o"], source.stdout, {"TERM": "xterm"}, stderr=terminal)
        self.assertEqual(done.stdout, b"2\n")
        shown = os.read(controller, 1000)
        self.assertEqual(shown, b"\rvekgrep: 0 MiB searched, now in (standard input)\33[K\r\33[K")

    def test_folders_with_links(self):
        try:
            os.symlink("..", "tree/a/up")
            os.symlink(".", "tree/itself")
            os.symlink("../b", "tree/link")
            os.symlink("nowhere", "tree/broken")
            if os.name == "posix":
                os.mkfifo("tree/pipe")
        except OSError as error:
            self.skipTest(str(error))
        done = run(["-R", "TWO", "tree"])
        self.assertEqual(done.stdout, b"tree/link:TWO two\r\n")
        self.assertIn(b"vekgrep: tree/itself: a link leads back to this folder\n", done.stderr)
        if not OPTIONS.emulator:  # which shows no links
            self.assertEqual(run(["-r", "TWO", "tree"]).stdout, b"")
        self.assertEqual(run(["-r", "TWO", "tree/link"]).stdout, b"tree/link:TWO two\r\n")

    def test_place_in_the_input(self):
        if OPTIONS.emulator:
            self.skipTest("the emulator has its own places")
        with open("a", "rb") as file:
            file.seek(4)
            self.assertEqual(run(["-m1", "-A1", "t"], file, PLAIN).stdout, b"two\nThree\n")
            self.assertEqual(os.read(file.fileno(), 100), b"Three\n")

    def test_wildcards(self):
        if not OPTIONS.emulator:
            self.skipTest("shells expand names")
        self.assertEqual(run(["w.*", "?"]).stdout, b"a:two\nb:TWO two\r\n")


class Grep(InFolder):
    """The table of grep's options, beside the system's own grep."""

    def setUp(self):
        super().setUp()
        about = shutil.which("grep") and subprocess.run(["grep", "--help"], stdout=subprocess.PIPE, check=False)
        if not about or b"GNU grep" not in about.stdout:
            self.skipTest("no GNU grep")
        self.about = about.stdout.decode()
        for name, content in grep_options.TEXTS.items():
            os.makedirs(os.path.dirname(name) or ".", exist_ok=True)
            self.write(name, content)

    def test_same(self):
        if OPTIONS.emulator:
            self.skipTest("the system's grep has other names for files")
        for name, target in grep_options.LINKS.items():
            os.symlink(target, name)
        runs = [(arguments, "") for arguments in grep_options.runs()]
        runs += [(["--color=always"] + arguments, colors) for colors in grep_options.COLORS
                 for arguments in grep_options.COLORED]
        for arguments, colors in runs:
            environment = {"LC_ALL": "C", "GREP_COLORS": colors}
            # Without one of these grep has its basic patterns.
            kind = [] if grep_options.KINDS.intersection(arguments) else ["-E"]
            expected = subprocess.run(["grep"] + kind + arguments, input=b"in two\nx\n", check=False,
                                      stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                      env=dict(os.environ, **environment))
            done = run(arguments, b"in two\nx\n", environment)
            with self.subTest(arguments=arguments, colors=colors):
                self.assertEqual(done.stdout, expected.stdout)
                self.assertEqual(done.returncode, expected.returncode)

    def test_every_option_is_in_the_table(self):
        known = {word.split("=")[0] for arguments in grep_options.runs() for word in arguments}
        letters = {"-" + letter for word in known if re.match("-[A-Za-z]", word) for letter in word[1:]}
        rows = "\n".join(re.findall(r"(?m)^ +-.*$", self.about.replace("-NUM", "-1")))
        for option in re.findall(r"(?<![-\w])(?:--[a-z][-a-z]*|-[A-Za-z1])", rows):
            if option not in grep_options.OTHERWISE:
                with self.subTest(option=option):
                    self.assertIn(option, known | letters)

    def test_otherwise(self):
        for option, (kind, _) in grep_options.OTHERWISE.items():
            with self.subTest(option=option):
                done = run([option, "two", "a"])
                self.assertEqual(done.returncode, 0 if kind == "other" else 2)
                shown = {"absent": b"unknown option", "refused": b"not supported", "other": b"vekgrep"}
                self.assertIn(shown[kind], done.stdout + done.stderr)


class Threads(InFolder):
    """The same output, in the same order, as one thread gives."""

    def expect_like_one(self, arguments, **more):
        one = run(["-j1"] + arguments, **more)
        for jobs in ("2", "5")[-few(2):]:
            many = run(["-j" + jobs] + arguments, **more)
            self.assertTrue(many.stdout == one.stdout, (arguments, jobs, len(many.stdout), len(one.stdout)))
            self.assertEqual((many.stderr, many.returncode), (one.stderr, one.returncode))
        return one

    def test_many_files(self):
        chance = random.Random(8)
        for i in range(few(200)):
            os.makedirs(f"many/{i % 7}", exist_ok=True)
            size = chance.choice((0, 3, 100, 100, 100, 100, 100, 60000))
            lines = [b"%d two %d\n" % (i, n) if chance.random() < 0.5 else b"none\n" for n in range(size)]
            self.write(f"many/{i % 7}/{i}", b"".join(lines) + chance.choice((b"", b"\0two\n", b"end")))
        table = ("-rn two", "-rnC1 ^9\\d+", "-rn --limit 0 two", "-rc two", "-rl two", "-rL two",
                 "-ro -b \\w+o", "-rm3 two", "-rv two", "-r --color=always tw?o")
        for arguments in table[:few(24)]:
            one = self.expect_like_one(arguments.split() + ["many", "gone"])
            self.assertEqual(one.returncode, 2)
        self.assertEqual(run(["-rq", "two", "many", "gone"]).returncode, 0)

    def test_large_file(self):
        chance = random.Random(9)
        lines = [b"%d two\n" % i * chance.choice((1, 1, 3)) for i in range(60000)]
        lines += [b"x" * (3 << 20) + b" two\n", b"short\n", b"\n" * 1000]
        chance.shuffle(lines)
        for end in (b"", b"last two", b"two\0\ntwo\n" + b"two\n" * 99999):
            self.write("large", b"".join(lines) + b"".join(lines[:50000]) + end)
            for arguments in ("-n 77", "-vc two", "-on 9+", "-n --limit 0 999$", "-F -v two"):
                if OPTIONS.share == 1 or (not end and "n" in arguments):
                    self.expect_like_one(arguments.split(" ") + ["large"])


class Random(InFolder):
    def test_like_grep(self):
        if not shutil.which("grep"):
            self.skipTest("no grep")
        environment = {"LC_ALL": "C", "GREP_COLORS": "ne"}
        random.seed(20)
        for _ in range(few(300)):
            alphabet = random.choice(("ab", "aAbB", "aA@`[{zZ", "aeiouxyz .,"))
            def text(least, most, extra=""):
                letters = random.choices(alphabet + extra, k=random.randint(least, most))
                return "".join(letters).encode("latin-1")
            files = ["f%d" % i for i in range(random.randint(0, 3))]
            contents = [text(0, random.choice((5, 50, 500)), "\n\n\r\xe9") for _ in files]
            for name, content in zip(files, contents):
                self.write(name, content)
            patterns = [text(0 if random.random() < 0.1 else 1, 4, random.choice(("", "", "\n")))
                        for _ in range(random.choice((1, 1, 2, 3, 9)))]
            arguments = ["-F"] + [o for o in ("-i", "-n", "-c", "-o", "-v", "-l", "--color=always")
                                  if random.random() < 0.3]
            arguments += [o for o in ("-w", "-x", "-b", "-L", "-m2", "-H", "-z", "-Z") if random.random() < 0.08]
            if not {"-o", "-v"}.issubset(arguments):  # together grep shows the matches around
                arguments += [o for o in ("-A1", "-B2", "-C1") if random.random() < 0.08]
            for pattern in patterns:
                arguments += ["-e", pattern.decode()]
            stdin = text(0, 100, "\n\n")
            expected = subprocess.run(["grep"] + arguments + files, input=stdin,
                                      stdout=subprocess.PIPE, env=dict(os.environ, **environment))
            done = run(arguments + files, stdin, environment)
            shown = (arguments, stdin, contents)
            self.assertEqual(done.stdout, expected.stdout, shown)
            self.assertEqual(done.returncode, expected.returncode, shown)


    PIECES = ("a", "b", "ab", "c", ".", "[ab]", "[^a]", "[^a\\n]", "\\s", "\\w", "\\W", "\\d", "\\S",
              "^", "$", "\\b", "a+", ".*", "\\d*?", "[^b]*", "\\s+", "[ab]{2,3}", "c?", "(a|bc)",
              "(a|b)+", "(?:ab)+?", "(?<=a)", "(?<!b)", "(?i:A)", "(b+|c)\\1", "\\A", "abc", "(?s:.)")
    # Before literal text the library means something else by what looks ahead.
    ENDS = ("", "(?=b)", "(?=\\W|$)", "(?!a)", "(?!.*c)") + tuple("|" + piece for piece in PIECES)

    def test_like_python(self):
        random.seed(21)
        environment = {"TERM": "dumb"}
        for _ in range(few(400)):
            patterns = ["".join(random.choices(self.PIECES, k=random.randint(1, 4))) +
                        random.choice(("", random.choice(self.ENDS)))
                        for _ in range(random.choice((1, 1, 2)))]
            letters = random.choice(("ab\n", "abc\n\n", "abcA1 \n", "ab,c \t_1\n"))
            text = "".join(random.choices(letters, k=random.choice((10, 100, 1000))))
            models = [re.compile(pattern) for pattern in patterns]
            lines = text.split("\n")[:-1] + [text.split("\n")[-1]] * (text[-1] != "\n")
            found = [any(model.search(line) for model in models) for line in lines]
            numbered = [f"{i}:{line}\n" for i, line in enumerate(lines, 1) if found[i - 1]]
            expected = [("-n", "".join(numbered)), ("-c", f"{sum(found)}\n"),
                        ("-vc", f"{len(found) - sum(found)}\n")]
            matches = [[m for m in models[0].finditer(line)] for line in lines]
            # How the search goes on after an empty match is a matter of taste.
            if len(models) == 1 and all(m[0] for line in matches for m in line):
                def replaced(m):
                    return f"<{m[0]}{m[1] or '' if m.re.groups else ''}0>"
                expected += [("-o", "".join(m[0] + "\n" for line in matches for m in line)),
                             ("--replace=<$&$1\\0>", "".join(models[0].sub(replaced, line) + "\n"
                                                     for line in lines if models[0].search(line)))]
            for option, shown in expected:
                arguments = [option] + [a for pattern in patterns for a in ("-e", pattern)]
                self.assertEqual(run(arguments, text.encode(), environment).stdout.decode(), shown,
                                 (arguments, text))


class Buffers(InFolder):
    def expect_like_model(self, content, needle, where):
        """Selected lines, their numbers and the numbers of lines, from a naive search."""
        self.write("f", content)
        lines = content.split(b"\n")
        if not lines[-1]:
            lines.pop()
        numbered = list(enumerate(lines, 1))
        hits = [line for line in numbered if needle in line[1]]
        if b"\0" in content:
            shown = b"vekgrep: f: binary file matches\n" if hits else b""
        else:
            shown = b"".join(b"%d:%s\n" % line for line in hits)
        text = needle.decode()
        runs = [("-Fn", text, shown), ("-Fc", text, b"%d\n" % len(hits)),
                ("-Fcv", text, b"%d\n" % (len(lines) - len(hits)))]
        if len(text) < 100:  # a pattern for each way to search lines: LITERALS, WHOLE, EVERY
            head, tail = f"[{text[0]}~]", text[1:]
            runs += [("-n", text, shown), ("-n", f"{head}{tail}[^~\\n]?", shown),
                     ("-n", f"({head}{tail})+", shown), ("-cv", text + "|~", runs[2][2])]
        for options, pattern, expected in runs:
            done = run([options, pattern, "f"])
            self.assertTrue(done.stdout + done.stderr == expected,
                            (where, options, pattern[:80], done.returncode, done.stdout[:80],
                             expected[:80], done.stderr))

    def test_places_around_the_end_of_the_buffer(self):
        offsets = (-3, 0) if OPTIONS.share > 1 else range(-7, 3)
        for line in (b"a line of text\n", b"x", b"\0y", b"ab\0" * 50000 + b"\n"):
            for offset in offsets:
                at = BUFFER + offset
                body = (line * (2 * BUFFER // len(line) + 2))[:2 * BUFFER]
                for needle in (b"q", b"needle"):
                    for extra in (b"", b"\n"):
                        content = body[:at] + needle + extra + body[at:]
                        self.expect_like_model(content, needle, (line[:9], offset, needle, extra))

    def test_long_patterns_in_pieces(self):
        longest = 30000 if OPTIONS.emulator else 100000  # that a command line takes
        needle = bytes(random.Random(3).choices(b"abc", k=longest))
        buffer = max(BUFFER, 4 * longest)
        for before in (10, buffer - longest // 2, 3 * buffer - 1):
            content = b"\0" + b"x" * before + needle + b"y" * buffer
            self.expect_like_model(content, needle, before)

    def test_line_that_is_too_long(self):
        for content, output, message, status in (
                (b"x", b"first\n", rb"vekgrep: \(standard input\): a line is longer than 256 MiB; .*\n", 2),
                (b"\0", b"", rb"vekgrep: \(standard input\): binary file matches\n", 0)):
            with self.subTest(content=content), tempfile.TemporaryFile() as file:
                file.write(b"first\n")
                for _ in range(258):
                    file.write(content * (1 << 20))
                file.write(b"first\n")
                file.seek(0)
                done = run(["-F", "first"], file)
                self.assertEqual(done.stdout, output)
                self.assertRegex(done.stderr, b"^" + message + b"$")
                self.assertEqual(done.returncode, status)
                file.seek(0)
                self.assertEqual(run(["-F", "-c", "first"], file).stdout, b"2\n")
                file.seek(0)
                done = run(["-l", "seco[n]d"], file)
                self.assertRegex(done.stderr, rb"is longer than 256 MiB; .*\n")
                self.assertEqual(done.returncode, 2)


class Streams(InFolder):
    BINARY = b"vekgrep: (standard input): binary file matches\n"

    def stream(self, shell, arguments, expected):
        with subprocess.Popen(["sh", "-c", shell], stdout=subprocess.PIPE) as source:
            done = run(arguments, source.stdout, **limited())
            source.stdout.close()
        self.assertEqual(done.stdout + done.stderr, expected)

    def test_zero_bytes_without_end_of_line(self):
        if OPTIONS.share > 1:
            self.skipTest("takes long where a run is slow")
        self.stream("head -c 2200M /dev/zero; echo needle; echo needle",
                    ["-F", "needle"], self.BINARY)

    def test_no_more_is_read_than_needed(self):
        self.stream("yes needle", ["-F", "-l", "needle"], b"(standard input)\n")
        self.stream("yes needle | tr '\\n' '\\0'", ["-F", "needle"],
                    self.BINARY)

    def test_lines_behind_2_31_bytes(self):
        line = "all work and no play " * 50 + "\n"
        self.write("block", line.encode() * 1000)
        count = (2200 << 20) // len(line) // 1000
        for arguments in (["-n", "nee+dle\\s*$"], ["-F", "-n", "needle"])[:few(2)]:
            self.stream(f"yes block | head -n {count} | xargs cat; echo needle", arguments,
                        b"%d:needle\n" % (count * 1000 + 1))


if __name__ == "__main__":
    main()
