# SPDX-License-Identifier: MIT
"""The table of differences in docs/pattern-language.md, as other engines answer: Perl, PCRE2 and RE2.

differences_test.py DOCUMENT [RE2_ANSWERS]   (the library's own column is run by guide_test.cpp)
"""

import ctypes
import re
import shutil
import subprocess
import sys

ROW = re.compile(r"^/(.*)/ {2,}(\S.*)$")


def rows(path):
    block = False
    for line in open(path, encoding="utf-8"):
        if line.startswith("```"):
            block = line.startswith("```differences")
        elif block and (match := ROW.match(line)):
            yield [match[1]] + re.split(" {2,}", match[2].strip())


def unquoted(text):
    escape = re.compile(rb"\\(x[0-9A-F]{2}|.)", re.S)
    known = {b"n": b"\n", b"t": b"\t"}
    return escape.sub(
        lambda m: bytes([int(m[1][1:], 16)]) if len(m[1]) == 3 else known.get(m[1], m[1]),
        text[1:-1].encode(),
    )


def pcre2():
    try:
        engine = ctypes.CDLL("libpcre2-8.so.0")
    except OSError:
        return None
    engine.pcre2_compile_8.restype = ctypes.c_void_p
    engine.pcre2_match_data_create_from_pattern_8.restype = ctypes.c_void_p
    engine.pcre2_get_ovector_pointer_8.restype = ctypes.POINTER(ctypes.c_size_t)
    pointer, size = ctypes.c_void_p, ctypes.c_size_t

    def answer(pattern, subject):
        error, offset = ctypes.c_int(), size()
        code = engine.pcre2_compile_8(
            pattern, size(len(pattern)), ctypes.c_uint32(0x00080000), ctypes.byref(error),
            ctypes.byref(offset), None,
        )
        if not code:
            return "refused"
        data = engine.pcre2_match_data_create_from_pattern_8(pointer(code), None)
        found = engine.pcre2_match_8(
            pointer(code), subject, size(len(subject)), size(0), ctypes.c_uint32(0), pointer(data),
            None,
        )
        ends = engine.pcre2_get_ovector_pointer_8(pointer(data))
        return subject[ends[0]:ends[1]] if found > 0 else "none"

    return answer


def perl():
    if not shutil.which("perl"):
        return None
    program = (
        "no warnings; my ($p, $s) = map { my $t = pack('H*', $_); utf8::decode($t); $t } @ARGV;"
        "my $r = eval { qr/$p/ }; if (!defined $r) { print 'refused'; exit }"
        "if ($s =~ $r) { my $m = $&; utf8::encode($m); print '=', unpack('H*', $m) }"
        "else { print 'none' }"
    )

    def answer(pattern, subject):
        out = subprocess.run(["perl", "-e", program, pattern.hex(), subject.hex()],
                             capture_output=True, text=True, check=True).stdout
        return bytes.fromhex(out[1:]) if out[0] == "=" else out

    return answer


def program(path):
    def answer(pattern, subject):
        out = subprocess.run([path, pattern, subject], capture_output=True, check=True).stdout
        return out[1:] if out[:1] == b"=" else out.decode()

    return answer


def main():
    engines = {2: ("Perl", perl()), 3: ("PCRE2", pcre2()),
               4: ("RE2", program(sys.argv[2]) if len(sys.argv) > 2 else None)}
    faults = count = 0
    for pattern, subject, *answers in rows(sys.argv[1]):
        for column, (name, engine) in engines.items():
            if engine is None:
                continue
            wanted = answers[column - 1]
            wanted = unquoted(wanted) if wanted.startswith('"') else wanted
            got = engine(pattern.encode(), unquoted(subject))
            count += 1
            if got != wanted:
                faults += 1
                print(f"/{pattern}/ on {subject}: {name} answers {got!r}, not {wanted!r}")
    print(f"{count} answers, {faults} faults; left out:",
          ", ".join(name for name, engine in engines.values() if engine is None) or "no engine")
    return faults != 0 or count == 0


if __name__ == "__main__":
    sys.exit(main())
