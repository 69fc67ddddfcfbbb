#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the manual pages from the public headers.

    tools/man_pages.py INCLUDE_FOLDER TARGET_FOLDER VERSION

vekch(7) from the comment of vekch/vekch.h and the list of functions; a page in section 3 for each
function: the prototype, the comment on it, and the rules that its header states for all of its
functions. Comments are Markdown as doxygen reads it; what they use of it is known here: paragraphs,
lists, headings, code (indented, or between backticks) and bold text.
"""

import pathlib
import re
import sys

COMMENT = re.compile(r"/\*\*(.*?)\*/\s*(VEKCH_API.*?;|static inline.*?\{)?", re.S)


def plain(comment):
    lines = [re.sub(r"^\s*\* ?", "", line) for line in comment.strip("\n").split("\n")]
    return "\n".join(lines).strip("\n").replace("@file\n", "").strip()


def escaped(text):
    """Text of a line for roff: nothing in it may be taken for a request or an escape."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def inline(text):
    pieces = re.split(r"(`[^`]+`|\*\*.+?\*\*)", text)
    marked = [
        f"\\fB{escaped(piece[1:-1] if piece[0] == '`' else piece[2:-2])}\\fP"
        if re.fullmatch(r"`[^`]+`|\*\*.+\*\*", piece) else escaped(piece)
        for piece in pieces if piece
    ]
    joined = "".join(marked)
    return "\\&" + joined if joined.startswith((".", "'")) else joined


def blocks(text):
    """(kind, text): paragraphs, items of lists, headings and code."""
    paragraph = []
    kind = "text"

    def done():
        nonlocal paragraph, kind
        if paragraph:
            yield kind, " ".join(paragraph)
        paragraph, kind = [], "text"

    for line in text.split("\n"):
        code = line.startswith("    ") and not paragraph
        term = re.match(r" {2,3}(?!-)(\S{1,12}) {2,}(\S.*)$", line)
        item = re.match(r"\s*(-|\d+\.) +", line)
        if not line.strip():
            yield from done()
        elif code:
            yield "code", line[4:]
        elif line.startswith("## "):
            yield from done()
            yield "heading", line[3:]
        elif term:
            yield from done()
            kind = "item " + term[1]
            paragraph.append(term[2])
        elif item:
            yield from done()
            kind = "item " + item[1]
            paragraph.append(line[item.end():])
        else:
            paragraph.append(line.strip())
    yield from done()


def roff(text):
    lines, code = [], False
    for kind, body in blocks(text):
        if (kind == "code") != code:
            code = kind == "code"
            lines.append(".PP\n.in +4n\n.nf" if code else ".fi\n.in")
        if kind == "code":
            lines.append(escaped(body) or "\\&")
        elif kind == "heading":
            lines.append(f".SS {inline(body)}")
        elif kind.startswith("item"):
            mark = "\\(bu" if kind == "item -" else escaped(kind[5:])
            lines.append(f'.IP "{mark}" 4\n{inline(body)}')
        else:
            lines.append(f".PP\n{inline(body)}")
    if code:
        lines.append(".fi\n.in")
    return "\n".join(lines)


def first_sentence(text):
    """For the line NAME: without marks, and not longer than a line."""
    text = " ".join(text.split()).removeprefix("vekch: ")
    sentence = re.split(r"(?<=[\w`][.:;])\s", text)[0].rstrip(".:;").replace("`", "")
    if len(sentence) > 90:
        sentence = re.split(r"[,(]| that | before | at its start| and ", sentence)[0].strip()
    if len(sentence) > 90:
        sentence = sentence[:sentence.rindex(" ", 0, 90)]
    return sentence if sentence[1:2].isupper() else sentence[:1].lower() + sentence[1:]


def prototype(declaration):
    text = re.sub(r"\bVEKCH_API\b|\bVEKCH_NOEXCEPT\b|\bstatic inline\b|\{$", "", declaration)
    text = " ".join(text.split()).rstrip("; ") + ";"
    start = text.index("(") + 1
    return text.replace(", ", ",\n" + " " * start)  # an argument a line


def title(name, section, version):
    return f'.TH {name} {section} "" "vekch {version}" "vekch"'


def page(name, declaration, comment, header, rules, related, version):
    description, example = re.fullmatch(r"(.*?)((?:\n(?: {4}.*)?)*)", comment, re.S).groups()
    return "\n".join([
        title(name, 3, version),
        ".SH NAME", f"{name} \\- {escaped(first_sentence(comment))}",
        ".SH SYNOPSIS", ".nf", f"\\fB#include <vekch/{header}>\\fP", "",
        *(f"\\fB{escaped(line)}\\fP" for line in prototype(declaration).split("\n")), ".fi",
        ".PP", "Link with \\fB\\-lvekchm7\\fP.",
        ".SH DESCRIPTION", roff(description), *([".SH EXAMPLES", roff(example)] if example else []),
        ".SH NOTES", f"What \\fI<vekch/{header}>\\fP says of all of its functions:", roff(rules),
        ".SH SEE ALSO",
        "".join(f"\\fB{other}\\fP(3),\n" for other in related) + "\\fBvekch\\fP(7)", "",
    ])


def main():
    include, target = map(pathlib.Path, sys.argv[1:3])
    version = sys.argv[3]
    target.mkdir(parents=True, exist_ok=True)
    functions = []
    overview = ""
    for path in sorted((include / "vekch").glob("*.h")):
        matches = COMMENT.findall(path.read_text())
        if not matches or "@file" not in matches[0][0]:
            continue
        rules = plain(matches[0][0])
        if path.name == "vekch.h":
            overview = rules
        for comment, declaration in matches[1:]:
            found = re.search(r"(\w+)\(", declaration)
            if found and not found[1].endswith("_"):
                functions.append((found[1], declaration, plain(comment), path.name, rules))
    for name, declaration, comment, header, rules in functions:
        related = [other for other, *_, where, _ in functions if where == header and other != name]
        (target / f"{name}.3").write_text(
            page(name, declaration, comment, header, rules, related, version))
    listed = "\n".join(f".TP\n\\fB{name}\\fP(3)\n{escaped(first_sentence(comment))}"
                       for name, _, comment, _, _ in functions)
    (target / "vekch.7").write_text("\n".join([
        title("vekch", 7, version), ".SH NAME", f"vekch \\- {escaped(first_sentence(overview))}",
        ".SH SYNOPSIS", "\\fB#include <vekch/vekch.h>\\fP", ".SH DESCRIPTION", roff(overview),
        ".SH FUNCTIONS", listed, ""]))
    print(f"{len(functions)} functions")


if __name__ == "__main__":
    main()
