# SPDX-License-Identifier: MIT
"""Runs an example program for its tests, natively or in an emulator."""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()


def run(arguments, stdin=b"", environment=None, stdout=None, stderr=None, **popen):
    """Runs the program; `stdin` is bytes or a file. Standard output, unless another file is given,
    and standard error go to files: processes that an emulator leaves behind would keep pipes open.

    An emulator under load loses a process now and then, which then says nothing and leaves a status
    of its own or 1. Such a run is repeated once, and reported if the second one ends differently.
    """
    done = run_once(arguments, stdin, environment, stdout, stderr, **popen)
    lost = done.returncode not in (0, 2) and not done.stdout + done.stderr
    if OPTIONS.emulator and lost and isinstance(stdin, bytes) and not stdout and not stderr:
        again = run_once(arguments, stdin, environment, stdout, stderr, **popen)
        if (again.returncode, again.stdout, again.stderr) != (done.returncode, b"", b""):
            print(f"SKIPPED IN PART: a run that the emulator lost with {done.returncode}: {arguments}")
        return again
    return done


def run_once(arguments, stdin, environment, stdout, stderr, oneOutput=False, **popen):
    command = ([OPTIONS.emulator] if OPTIONS.emulator else []) + [OPTIONS.program]
    popen["input" if isinstance(stdin, bytes) else "stdin"] = stdin
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        done = subprocess.run(command + list(arguments), timeout=250, stdout=stdout or out,
                              stderr=stderr or (out if oneOutput else err),
                              env=dict(os.environ, **(environment or {})), **popen)
        out.seek(0)
        err.seek(0)
        done.stdout, done.stderr = out.read(), err.read()
    return done


def expect_table(test, table, environment=None):
    """Rows are arguments, standard input, standard output, pattern of standard error, exit status.
    Output that ends with ".*" is a pattern as well."""
    def as_bytes(text):
        return text.encode() if isinstance(text, str) else text

    for arguments, stdin, stdout, stderr, status in table:
        if isinstance(arguments, str):
            arguments = arguments.split()
        with test.subTest(arguments=arguments):
            done = run(arguments, as_bytes(stdin), environment)
            stdout = as_bytes(stdout)
            stdout = stdout if stdout.endswith(b".*") else re.escape(stdout)
            test.assertRegex(done.stdout, re.compile(rb"(?s)\A%b\Z" % stdout))
            test.assertRegex(done.stderr.decode(), re.compile(rf"(?s)\A{stderr}\Z"))
            test.assertEqual(done.returncode, status)


def expect_failing_output(test, name, arguments):
    """A full disk, and an output that is closed."""
    if os.name != "posix" or not os.path.exists("/dev/full"):
        test.skipTest("needs /dev/full")
    with open("/dev/full", "wb") as file:
        done = run(arguments, stdout=file)
    test.assertIn(name + b": standard output: No space left", done.stderr)
    test.assertEqual(done.returncode, 2)
    done = run(arguments, preexec_fn=lambda: os.close(1))
    test.assertEqual((done.stderr, done.returncode), (name + b": standard output: it is closed\n", 2))


def few(count):
    """As many rounds as `count`, or the share of it that is tried where a run is slow."""
    return max(1, count // OPTIONS.share)


def limited(size=64 << 20):
    """Arguments of run that keep the program's memory below `size`, where it can be bounded."""
    if not OPTIONS.bounded:
        return {}
    import resource
    return {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size))}


def open_terminal(test):
    """Both ends of a pseudo-terminal, for the time of the test; without any it is skipped."""
    if OPTIONS.emulator:
        test.skipTest("no pseudo-terminal leads into the emulator")
    try:
        import pty
        ends = pty.openpty()
    except (ImportError, OSError) as error:
        test.skipTest(f"no pseudo-terminal: {error}")
    for end in ends:
        test.addCleanup(os.close, end)
    return ends


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--emulator")
    parser.add_argument("--bounded", action="store_true")
    parser.add_argument("--share", type=int, default=1, help="one of so many random cases is tried")
    rest = parser.parse_known_args(namespace=OPTIONS)[1]
    result = unittest.main("__main__", argv=sys.argv[:1] + rest, exit=False).result
    for test, reason in result.skipped:
        print(f"SKIPPED IN PART: {test.id().split('.', 1)[1]}: {reason}")
    sys.exit(not result.wasSuccessful())
