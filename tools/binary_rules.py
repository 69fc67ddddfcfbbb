#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The promises of the built shared library, checked on the binary itself, ELF or PE.

binary_rules.py --exports LIST [--definition DEF] [--version VERSION] [--folder FOLDER]
                [--readelf READELF] [--expect RULE,...] LIBRARY

Asks objdump for its headers and its code, and nm for its symbols; with --readelf the library is to
be ready for protected control flow. Every breach is printed as
"RULE: what is wrong"; the exit code is 0 if there is none. With --expect it is 0 if exactly these
rules are broken: so the negative controls show that each rule can fail.
"""

import argparse
import pathlib
import re
import struct
import subprocess
import sys
from dataclasses import dataclass, field

SLOTS = 46
PAGE = 4096
KERNEL_SYMBOL = re.compile(r"_ZZ?NK?5vekch7kernels")


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


@dataclass
class Section:
    name: str
    start: int
    end: int
    writable: bool
    executable: bool


@dataclass
class Image:
    """What both formats have in common; `breaches` are those that only the format knows."""

    headers: str
    soname: str = ""
    wanted_soname: str = ""
    exports: dict = field(default_factory=dict)  # name to ordinal, None in ELF
    imports: list = field(default_factory=list)
    sections: list = field(default_factory=list)
    breaches: list = field(default_factory=list)

    def find(self, pattern):
        return re.findall(pattern, self.headers, re.MULTILINE)


def read_image(options):
    image = Image(run(options.objdump, "-p", "-h", "-w", options.library))
    section = r"^ *\d+ (\S+) +(\w+)  (\w+)  \w+  \w+  2\*\*\d+ +(.*ALLOC.*)$"
    for name, size, start, flags in image.find(section):
        start, size = int(start, 16), int(size, 16)
        image.sections.append(
            Section(name, start, start + size, "READONLY" not in flags, "CODE" in flags)
        )
    (read_elf if "file format elf" in image.headers else read_pe)(image, options)
    return image


def read_elf(image, options):
    image.wanted_soname = "libvekchm7.so.1"
    dynamic = dict(image.find(r"^  ([A-Z_0-9]+) +(\S+)$"))
    image.soname = dynamic.get("SONAME", "")
    image.imports = ["the library " + name for name in image.find(r"^  NEEDED +(\S+)$")]
    for tag in ("INIT", "FINI", "INIT_ARRAY", "FINI_ARRAY", "PREINIT_ARRAY"):
        if tag in dynamic:
            image.breaches.append(("loading", f"{tag}: code that runs on loading"))
    if not int(dynamic.get("FLAGS", "0"), 16) & 8 and not int(dynamic.get("FLAGS_1", "0"), 16) & 1:
        image.breaches.append(("writable", "not bound at loading: the offset table stays writable"))
    symbols = run(options.nm, "-D", options.library)
    for kind, name in re.findall(r"^[0-9a-f ]+ (\w) ([^@\n]+)", symbols, re.MULTILINE):
        if kind == "U":  # weak start-up references may stay open
            image.imports.append(name)
        elif kind not in "Awv":  # nor the name of the version itself
            image.exports[name] = None

    segment = r"^ *(\w+) off .* vaddr 0x(\w+) .*\n +filesz .* memsz 0x(\w+) flags (...)$"
    segments = [(kind, int(start, 16), int(start, 16) + int(size, 16), flags)
                for kind, start, size, flags in image.find(segment)]
    if not any(kind == "STACK" and "x" not in flags for kind, _, _, flags in segments):
        image.breaches.append(("stack", "the stack is executable"))
    # What the loader relocates is writable until then and read-only ever after, in whole pages.
    sealed = [(start, end) for kind, start, end, _ in segments if kind == "RELRO"] or [(0, 0)]
    sealed_start, sealed_end = sealed[0]
    for kind, start, end, flags in segments:
        if kind == "LOAD" and "w" in flags and (
            "x" in flags or start < sealed_start or end > sealed_end or sealed_end % PAGE
        ):
            image.breaches.append(("writable", f"{start:#x} to {end:#x} stays writable"))
    for section in image.sections:
        if sealed_start <= section.start and section.end <= sealed_end:
            section.writable = section.name.startswith((".tdata", ".tbss"))


def read_pe(image, options):
    image.wanted_soname = "vekchm7.dll"
    image.soname = "".join(image.find(r"^Name \s+\w+ (\S+)$"))
    image.imports = ["the library " + name for name in image.find(r"^\s+DLL Name: (\S+)$")]
    for number, what in image.find(r"^Entry ([9bd]) (?!0+ )\S+ \S+ (.*)"):
        image.breaches.append(("imports", f"directory {number}: {what}"))
    if "NX_COMPAT" not in image.headers:
        image.breaches.append(("stack", "stack and heap are executable"))
    entry, base = (int(image.find(rf"^{name}\s+(\w+)$")[0], 16)
                   for name in ("AddressOfEntryPoint", "ImageBase"))
    code = run(options.objdump, "-s", f"--start-address={base + entry}",
               f"--stop-address={base + entry + 6}", options.library)
    if " b8010000 00c3 " not in code:
        image.breaches.append(("loading", "the entry function is more than 'return 1'"))
    # Some linkers mark as writable what ends the table of imports, and what the rule for imports
    # finds there, and the resources, which no code refers to: a section that is nothing else.
    resources = image.find(r"^Entry 2 (\w+) (\w+) Resource")[0]
    for section in image.sections:
        size = section.end - section.start
        if section.name == ".idata" or section.name == ".rsrc" and (
            section.start - base, size) == tuple(int(word, 16) for word in resources):
            section.writable = False
    name = r"^\t\[ *(\d+)\] (?:\+base\[ *\d+\] +\w+ )?(\w+)$"
    for ordinal, name in image.find(name):
        image.exports[name] = int(ordinal) + int(image.find(r"^Ordinal Base\s+(\d+)$")[0])


# ---- The rules.


def read_exports(path):
    with open(path, encoding="ascii") as lines:
        return [(int(line.split()[0]), line.split()[1]) for line in lines if line[0].isdigit()]


def list_breaches(exports):
    slots = [slot for slot, _ in exports]
    names = [name for _, name in exports]
    if slots != sorted(set(slots)) or not all(1 <= slot <= SLOTS for slot in slots):
        yield "list", f"slots are not distinct and ascending from 1 to {SLOTS}"
    if names != sorted(set(names)):
        yield "list", "names in slot order are not in the order of their bytes"


def export_breaches(image, exports):
    wanted = dict((name, slot) for slot, name in exports)
    for name in sorted(wanted.keys() - image.exports.keys()):
        yield "exports", f"{name} is not exported"
    for name in sorted(image.exports.keys() - wanted.keys()):
        yield "exports", f"{name} is exported but not in the list"
    for name in sorted(wanted.keys() & image.exports.keys()):
        if image.exports[name] not in (None, wanted[name]):
            yield "ordinals", f"{name} has ordinal {image.exports[name]}, not {wanted[name]}"


def definition_breaches(path, exports):
    with open(path, encoding="ascii") as definition:
        lines = definition.read().split("EXPORTS\n")[1].splitlines()
    if [line.split() for line in lines] != [[name, f"@{slot}"] for slot, name in exports]:
        yield "ordinals", f"{path} does not hold the names of the list with their slots"


def section_breaches(image):
    for section in image.sections:
        if section.writable and section.start != section.end:
            yield "writable", f"section {section.name} from {section.start:#x} to {section.end:#x}"
    if image.imports:
        yield "imports", ", ".join(image.imports)
    if image.soname != image.wanted_soname:
        yield "soname", f"the library calls itself '{image.soname}', not '{image.wanted_soname}'"


def version_breaches(image, library, version):
    """The DLL's version resource holds the version, twice: of the file and of the product."""
    if image.wanted_soname.endswith(".dll"):
        numbers = [*map(int, version.split(".")), 0]
        words = struct.pack("<4H", *(numbers[i] for i in (1, 0, 3, 2)))
        if b"\xbd\x04\xef\xfe\0\0\1\0" + 2 * words not in pathlib.Path(library).read_bytes():
            yield "version", f"no version resource with {version}"


def repeatable_breaches(image, library, folder):
    """The same sources give the same bytes: nothing says when or where they were compiled."""
    for stamp in image.find(r"^Time/Date(?: stamp)?\s+(.*)$"):
        if "1970" not in stamp and stamp.strip() != "0":
            yield "repeatable", f"the time {stamp}"
    if folder and folder.encode() in pathlib.Path(library).read_bytes():
        yield "repeatable", f"the folder {folder}"


def kernel_breaches(image, nm, library):
    """Every function of the kernels lies in VEKCODE, their table of cache sizes in VEKDATA."""
    missing = {"VEKCODE", "VEKDATA"}
    for line in run(nm, "--defined-only", library).splitlines():
        address, _, name = line.split(maxsplit=2)
        if not KERNEL_SYMBOL.match(name):
            continue
        address = int(address, 16)
        for section in image.sections:
            if not section.start <= address < section.end:
                continue
            if not section.executable and "kDescriptorTable" not in name:
                continue
            wanted = "VEKCODE" if section.executable else "VEKDATA"
            missing.discard(wanted)
            if section.name != wanted:
                yield "kernels", f"{name} lies in {section.name}, not in {wanted}"
    if missing:
        yield "kernels", f"nothing found for {', '.join(sorted(missing))}"


# Everything that came after SSE3, as AT&T mnemonics without their size suffixes.
ABOVE_SSE3 = re.compile(
    r"v\w+|k(?:mov|and|or|xor|xnor|not|add|test|ortest|shift|unpck)\w*"  # AVX to AVX-512
    r"|pshufb|phadd\w+|phsub\w+|pmaddubsw|pmulhrsw|psign[bwd]|palignr|pabs[bwd]"  # SSSE3
    r"|pmulld|pmuldq|dpp[sd]|movntdqa|p?blend\w+|p(?:min|max)(?:s[bd]|u[wd])|round[ps][sd]"  # SSE4.1
    r"|insertps|extractps|p(?:insr|extr)[bdq]|pmov[sz]x\w+|mpsadbw|phminposuw|ptest"
    r"|pcmpeqq|packusdw"
    r"|pcmp[ei]str\w+|pcmpgtq|crc32\w*"  # SSE4.2
    r"|extrq|insertq|movnts[sd]"  # SSE4a
    r"|popcnt\w?|lzcnt\w?|movbe\w?|andn\w?|bextr\w?|bls(?:i|r|msk)\w?|bzhi\w?"  # bit operations
    r"|mulx\w?|pdep\w?|pext\w?|rorx\w?|sarx\w?|shlx\w?|shrx\w?|ad[co]x\w?"
    r"|aes\w+|pclmul\w+|sha(?:1|256)\w+|gf2p8\w+|rdrand\w?|rdseed\w?|x(?:begin|end|abort|test)"
    r"|xsave\w*|xrstor\w*|xgetbv|clflushopt|clwb|prefetchwt?1?|femms|pf\w+|p(?:avgusb|mulhrw)"
    r"|rdtscp|tpause|u(?:monitor|mwait)|movdir\w+|enqcmd\w?|serialize|\(bad\)"
)
SYSTEM_CALL = re.compile(r"syscall|sysenter|int")
# tzcnt is absent on purpose: compilers write a bit scan as "rep bsf", which has the bytes of tzcnt
# and is shown as it. Older processors ignore the prefix, and where a bit is set both instructions
# give its position; where none is, the language leaves the builtin's result undefined anyway.
PREFIXES = re.compile(r"(?:(?:rep\w*|lock|bnd|notrack|data16|addr32|[cdefgs]s|rex\S*) +)*")
INSTRUCTION = re.compile(r"^ +[0-9a-f]+:\t(.+)$")
LABEL = re.compile(r"^[0-9a-f]+ <(.+)>:$")
# Data that the linker of the DLL lays among the code: the ends of its lists of constructors.
LINKER_LIST = re.compile(r"_{2,3}[CD]TOR_LIST__")


def fault_of(instruction):
    mnemonic, _, operands = instruction.partition(" ")
    if SYSTEM_CALL.fullmatch(mnemonic):
        return "a system call"
    # The form of pextrw that stores to memory came with SSE4.1.
    if ABOVE_SSE3.fullmatch(mnemonic) or (mnemonic == "pextrw" and operands.endswith(")")):
        return "above SSE3"
    return None


def instruction_breaches(objdump, library):
    count = 0
    label = ""
    for line in run(objdump, "-d", "-w", "--no-show-raw-insn", library).splitlines():
        if heading := LABEL.match(line):
            label = heading[1]
        matched = INSTRUCTION.match(line)
        if matched is None or LINKER_LIST.fullmatch(label):
            continue
        count += 1
        instruction = PREFIXES.sub("", matched[1], count=1).split("#")[0].strip()
        if fault := fault_of(instruction):
            yield "instructions", f"{fault}: {line.strip()}"
    if count == 0:
        yield "instructions", "nothing was disassembled"


def flow_breaches(image, options):
    """The library may be loaded where indirect jumps are held to marked places, and returns to a
    second stack; which ends where a single object is not made for it."""
    notes = run(options.readelf, "-n", "-W", options.library)
    for feature in ("IBT", "SHSTK"):
        if not re.search(rf"x86 feature:.*\b{feature}\b", notes):
            yield "flow", f"no note says {feature}"
    code = run(options.objdump, "-d", "--no-show-raw-insn", options.library)
    for name in sorted(image.exports):
        if not re.search(rf"<{name}>:\n.*\tendbr64", code):
            yield "flow", f"{name} is no place that a call may lead to"


def breaches(options):
    exports = read_exports(options.exports)
    image = read_image(options)
    yield from list_breaches(exports)
    yield from export_breaches(image, exports)
    if options.definition:
        yield from definition_breaches(options.definition, exports)
    if options.version:
        yield from version_breaches(image, options.library, options.version)
    yield from repeatable_breaches(image, options.library, options.folder)
    yield from image.breaches
    yield from section_breaches(image)
    yield from kernel_breaches(image, options.nm, options.library)
    yield from instruction_breaches(options.objdump, options.library)
    if options.readelf:
        yield from flow_breaches(image, options)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("--exports", required=True)
    parser.add_argument("--definition")
    parser.add_argument("--version")
    parser.add_argument("--folder")
    parser.add_argument("--expect", default="")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--readelf")
    options = parser.parse_args()
    found = list(breaches(options))
    for rule, what in found:
        print(f"{rule}: {what}")
    broken = {rule for rule, _ in found}
    return 0 if broken == set(filter(None, options.expect.split(","))) else 1


if __name__ == "__main__":
    sys.exit(main())
