#!/usr/bin/env python3
"""The promises of the built shared library, checked on the binary itself, ELF or PE.

binary_rules.py --exports LIST [--definition DEF] [--expect RULE,...] LIBRARY

Reads the headers of the file, then asks nm for its symbols and objdump for its code. Every breach
is printed as "RULE: what is wrong"; the exit code is 0 if there is none. With --expect it is 0 if
exactly these rules are broken: so the negative controls show that each rule can fail.
"""

import argparse
import re
import struct
import subprocess
import sys
from dataclasses import dataclass, field

SLOTS = 46
PAGE = 4096
KERNEL_SYMBOL = re.compile(r"_ZZ?NK?5vekch7kernels")


@dataclass
class Section:
    name: str
    start: int
    size: int
    writable: bool
    executable: bool
    data: bytes = b""


@dataclass
class Image:
    """What both formats have in common; `breaches` are those that only the format knows."""

    soname: str = ""
    wanted_soname: str = ""
    exports: dict = field(default_factory=dict)  # name to ordinal, None in ELF
    imports: list = field(default_factory=list)
    sections: list = field(default_factory=list)
    breaches: list = field(default_factory=list)


def text_at(data, offset):
    return data[offset : data.index(b"\0", offset)].decode()


def read_elf(data):
    image = Image(wanted_soname="libvekchm7.so.1")
    program_offset, section_offset = struct.unpack_from("<QQ", data, 0x20)
    program_count, _, section_count, names_index = struct.unpack_from("<4H", data, 0x38)
    headers = [
        struct.unpack_from("<IIQQQQIIQQ", data, section_offset + 64 * i)
        for i in range(section_count)
    ]
    for name, _, flags, address, _, size, *_ in headers:
        if flags & 2:  # present in memory
            name = text_at(data, headers[names_index][4] + name)
            image.sections.append(
                Section(name, address, size, bool(flags & 1), bool(flags & 4))
            )

    def entries(kind, layout, skipped=0):
        header = next(header for header in headers if header[1] == kind)
        return struct.iter_unpack(layout, data[header[4] + skipped : header[4] + header[5]])

    dynamic = {}
    symbol_table = next(header for header in headers if header[1] == 11)
    strings = headers[symbol_table[6]][4]
    for tag, value in entries(6, "<QQ"):
        dynamic[tag] = value
        if tag == 1:
            image.imports.append("the library " + text_at(data, strings + value))
        elif tag == 14:
            image.soname = text_at(data, strings + value)
        elif tag in (12, 13, 25, 26, 32):
            image.breaches.append(("loading", f"dynamic tag {tag}: code that runs on loading"))
    if not dynamic.get(30, 0) & 8 and not dynamic.get(0x6FFFFFFB, 0) & 1:
        image.breaches.append(("writable", "not bound at loading: the offset table stays writable"))

    for name, info, _, index, _, _ in entries(11, "<IBBHQQ", skipped=24):
        name = text_at(data, strings + name)
        if index == 0 and info >> 4 != 2:  # weak start-up references may stay open
            image.imports.append(name)
        elif index not in (0, 0xFFF1):  # not the name of the version itself
            image.exports[name] = None

    check_elf_segments(image, data, program_offset, program_count)
    return image


def check_elf_segments(image, data, offset, count):
    segments = [struct.unpack_from("<IIQQQQQQ", data, offset + 56 * i) for i in range(count)]
    kinds = {s[0]: s for s in segments}
    if 0x6474E551 not in kinds or kinds[0x6474E551][1] & 1:
        image.breaches.append(("stack", "the stack is executable"))
    # What the loader relocates is writable until then and read-only ever after, in whole pages.
    relro = kinds.get(0x6474E552)
    relro_start, relro_end = (relro[3], relro[3] + relro[6]) if relro else (0, 0)
    for kind, flags, _, start, _, _, size, _ in segments:
        if kind != 1 or not flags & 2:
            continue
        if flags & 1:
            image.breaches.append(("writable", f"writable code at {start:#x}"))
        if start < relro_start or start + size > relro_end or relro_end % PAGE:
            image.breaches.append(
                ("writable", f"{start:#x} to {start + size:#x} stays writable after loading")
            )
    for section in image.sections:
        if relro_start <= section.start and section.start + section.size <= relro_end:
            section.writable = section.name.startswith((".tdata", ".tbss"))


def read_pe(data):
    image = Image(wanted_soname="vekchm7.dll")
    pe = struct.unpack_from("<I", data, 0x3C)[0]
    section_count = struct.unpack_from("<H", data, pe + 6)[0]
    optional = pe + 24
    entry = struct.unpack_from("<I", data, optional + 16)[0]
    base = struct.unpack_from("<Q", data, optional + 24)[0]
    characteristics = struct.unpack_from("<H", data, optional + 70)[0]
    directories = [struct.unpack_from("<II", data, optional + 112 + 8 * i) for i in range(16)]
    table = optional + struct.unpack_from("<H", data, pe + 20)[0]
    for i in range(section_count):
        name, size, address, raw_size, raw, flags = struct.unpack_from(
            "<8sIIII12xI", data, table + 40 * i
        )
        image.sections.append(
            Section(
                name.rstrip(b"\0").decode(), base + address, size,
                bool(flags & 0x80000000), bool(flags & 0x20000000),
                data[raw : raw + min(size, raw_size)],
            )
        )

    def at(address):
        for section in image.sections:
            offset = base + address - section.start
            if 0 <= offset < section.size:
                return section.data[offset:]
        return b""

    def name_at(address):
        return text_at(at(address), 0)

    if not characteristics & 0x100:
        image.breaches.append(("stack", "stack and heap are executable"))
    if not at(entry).startswith(b"\xb8\x01\x00\x00\x00\xc3"):
        image.breaches.append(("loading", "the entry function is more than 'return 1'"))
    for number, what in ((9, "thread-local storage"), (11, "bound imports"), (13, "late imports")):
        if directories[number][0]:
            image.breaches.append(("imports", what))
    if directories[1][0]:
        start, size = directories[1]
        for descriptor in struct.iter_unpack("<5I", at(start)[: size // 20 * 20]):
            if not any(descriptor):
                break
            image.imports.append("the library " + name_at(descriptor[3]))
    # The linker leaves the empty descriptor that ends an import table: 20 bytes and their padding.
    for section in image.sections:
        if section.name == ".idata" and section.size <= 24 and not any(section.data):
            section.writable = False

    if directories[0][0]:
        header = struct.unpack_from("<IIHH7I", at(directories[0][0]))
        _, _, _, _, name, ordinal_base, _, count, _, names, ordinals = header
        image.soname = name_at(name)
        for i in range(count):
            address = struct.unpack_from("<I", at(names), 4 * i)[0]
            ordinal = struct.unpack_from("<H", at(ordinals), 2 * i)[0]
            image.exports[name_at(address)] = ordinal_base + ordinal
    return image


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
        if section.writable and section.size:
            yield "writable", f"section {section.name} of {section.size} bytes"
    if image.imports:
        yield "imports", ", ".join(image.imports)
    if image.soname != image.wanted_soname:
        yield "soname", f"the library calls itself '{image.soname}', not '{image.wanted_soname}'"


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def kernel_breaches(image, nm, library):
    """Every function of the kernels lies in VEKCODE, their table of cache sizes in VEKDATA."""
    missing = {"VEKCODE", "VEKDATA"}
    for line in run(nm, "--defined-only", library).splitlines():
        address, _, name = line.split(maxsplit=2)
        if not KERNEL_SYMBOL.match(name):
            continue
        address = int(address, 16)
        for section in image.sections:
            if not section.start <= address < section.start + section.size:
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


def breaches(options):
    exports = read_exports(options.exports)
    with open(options.library, "rb") as file:
        data = file.read()
    image = read_elf(data) if data.startswith(b"\x7fELF") else read_pe(data)
    yield from list_breaches(exports)
    yield from export_breaches(image, exports)
    if options.definition:
        yield from definition_breaches(options.definition, exports)
    yield from image.breaches
    yield from section_breaches(image)
    yield from kernel_breaches(image, options.nm, options.library)
    yield from instruction_breaches(options.objdump, options.library)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("--exports", required=True)
    parser.add_argument("--definition")
    parser.add_argument("--expect", default="")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--objdump", default="objdump")
    options = parser.parse_args()
    found = list(breaches(options))
    for rule, what in found:
        print(f"{rule}: {what}")
    broken = {rule for rule, _ in found}
    return 0 if broken == set(filter(None, options.expect.split(","))) else 1


if __name__ == "__main__":
    sys.exit(main())
