#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares a DLL and what its compiler makes of the headers with abidw's description of a release.

dll_layout.py --objdump OBJDUMP --compiler CC --include FOLDER DESCRIPTION DLL

The exported names must be those of the description, with ordinals from 1 on in the same order. The
structs and the types of the functions become assertions, which the compiler is asked about.
"""

import argparse
import re
import subprocess
import sys
import xml.etree.ElementTree


def spelled(types, number):
    """A type in C, of those that parameters have."""
    kind = types[number]
    inner = kind.get("type-id")
    return {
        "type-decl": lambda: kind.get("name"),
        "typedef-decl": lambda: kind.get("name"),
        "class-decl": lambda: "struct " + kind.get("name"),
        "qualified-type-def": lambda: spelled(types, inner) + " const",
        "pointer-type-def": lambda: spelled(types, inner) + "*",
    }[kind.tag]()


def assertions(root):
    types = {element.get("id"): element for element in root.iter() if element.get("id")}
    for struct in root.iter("class-decl"):
        name = "struct " + struct.get("name")
        yield f"sizeof({name}) == {int(struct.get('size-in-bits')) // 8}"
        for member in struct.iter("data-member"):
            offset = int(member.get("layout-offset-in-bits")) // 8
            yield f"offsetof({name}, {member.find('var-decl').get('name')}) == {offset}"
    for function in root.iter("function-decl"):
        takes = [spelled(types, part.get("type-id")) for part in function.iter("parameter")]
        gives = spelled(types, function.find("return").get("type-id"))
        yield (f"__builtin_types_compatible_p(__typeof__(&{function.get('name')}), "
               f"{gives} (*)({', '.join(takes) or 'void'}))")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--objdump", "--compiler", "--include", "description", "dll"):
        parser.add_argument(option)
    options = parser.parse_args()
    root = xml.etree.ElementTree.parse(options.description).getroot()
    wanted = [symbol.get("name") for symbol in root.iter("elf-symbol")]
    headers = subprocess.run([options.objdump, "-p", options.dll], check=True,
                             stdout=subprocess.PIPE, text=True).stdout
    entry = r"^\t\[ *(\d+)\] (?:\+base\[ *\d+\] +\w+ )?([A-Za-z]\w+)$"
    exported = [(int(slot), name) for slot, name in re.findall(entry, headers, re.MULTILINE)]
    different = set(exported) ^ set(enumerate(wanted))
    for slot, name in sorted(different):
        print(f"{name} with ordinal {slot + 1} is in one of both only")

    checks = list(assertions(root))
    source = "#include <stddef.h>\n#include <vekch/regexp_program.h>\n#include <vekch/vekch.h>\n"
    source += "".join(f'_Static_assert({check}, "{check}");\n' for check in checks)
    compiled = subprocess.run([options.compiler, "-std=c11", "-x", "c", "-fsyntax-only",
                               f"-I{options.include}", "-"], input=source, text=True, check=False)
    print(f"{len(wanted)} names, {len(checks)} assertions")
    return 1 if different or compiled.returncode or len(checks) < len(wanted) else 0


if __name__ == "__main__":
    sys.exit(main())
