# SPDX-License-Identifier: MIT
"""Mutants: one-token changes of the library's sources, all of them compiled into one program.

Clang's syntax tree says where the operators, literals and increments are, and which of them a
compiler evaluates; the changed expression E becomes (VEKCH_IS_MUTANT(n) ? changed : E) in a copy
of the sources. Which expressions are chosen follows from a digest of their line, so that an edit
elsewhere leaves the choice as it was.
"""

import collections
import hashlib
import json
import pathlib
import re
import subprocess
import sys

sys.setrecursionlimit(100000)  # the syntax tree is walked as deep as it is

FOLDERS = ("frame", "regexp", "strings", "unicode")
# Data, and what the test programs leave to the C library.
LEFT_OUT = ("regexp/characters/unicode_5_1_tables.cpp", "frame/freestanding.cpp")

OPERATORS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
    "+": "-", "-": "+", "&&": "||", "||": "&&", "&": "|", "|": "&", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=",
}  # fmt: skip

# What compilers evaluate, or want as a constant.
CONSTANTS = {"ConstantExpr", "StaticAssertDecl", "TemplateArgument", "EnumConstantDecl",
             "NonTypeTemplateParmDecl", "UnaryExprOrTypeTraitExpr", "CXXNoexceptExpr"}  # fmt: skip

COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
LITERAL = re.compile(r"(?:0[xX][0-9a-fA-F]+|[0-9]+)[uUlL]*")


class Site(collections.namedtuple("Site", "file begin end token at change text")):
    """An expression and its change; `text` is the changed expression, `at` where its token is."""

    def line(self, source):
        begin = source.rfind("\n", 0, self.at) + 1
        return source[begin : source.find("\n", self.at)].strip()


Mutant = collections.namedtuple("Mutant", "number site line name score")


class TreeReader:
    """Collects the sites of one translation unit from clang's tree in JSON."""

    def __init__(self, sources):
        self.sources = sources
        self.file = None  # of the position printed last: clang names it only where it changes
        self.sites = set()
        self.refused = set()

    # ---- Positions

    def note_file(self, position):
        """Follows the files through a position of the tree, in the order in which it was printed."""
        for key, value in position.items():
            if key == "file":
                self.file = str(pathlib.PurePosixPath(value))
            elif key in ("spellingLoc", "expansionLoc", "begin", "end"):
                self.note_file(value)

    @staticmethod
    def bounds(node):
        """Offsets of a node, None where it has none or a macro with arguments is involved."""
        span = node.get("range", {})
        begin, end = (span.get(key, {}) for key in ("begin", "end"))
        if "expansionLoc" in begin or "offset" not in begin:
            begin = begin.get("expansionLoc", {})
        if "expansionLoc" in end or "offset" not in end:
            end = end.get("expansionLoc", {})
        if "offset" not in begin or "offset" not in end:
            return None
        return begin["offset"], end["offset"] + end["tokLen"]

    @staticmethod
    def in_macro(node):
        span = node.get("range", {})
        return any("expansionLoc" in span.get(key, {}) for key in ("begin", "end"))

    # ---- The walk

    def read(self, node, held, callee):
        """`held`: whether a compiler evaluates this; `callee`: of the call around."""
        for key in ("loc", "range"):
            if isinstance(node.get(key), dict):
                self.note_file(node[key])
        kind = node.get("kind", "")
        held = held or self.is_constant(node, kind)
        if not held and self.file in self.sources:
            self.collect(node, kind, callee)
        children = node.get("inner", [])
        if kind in ("CallExpr", "CXXOperatorCallExpr") and self.file in self.sources:
            bounds = self.bounds(node)
            callee = self.sources[self.file][bounds[0] : bounds[1]] if bounds else callee
        evaluated = self.evaluated_child(node, kind)
        file = self.file
        for i, child in enumerate(children):
            if child:
                self.read(child, held or i == evaluated or "Attr" in child.get("kind", ""), callee)
        del file

    @staticmethod
    def is_constant(node, kind):
        if kind == "VarDecl":
            return node.get("constexpr", False) or node.get("storageClass") == "static"
        return kind in CONSTANTS

    @staticmethod
    def evaluated_child(node, kind):
        if kind == "CaseStmt":
            return 0
        if kind == "IfStmt" and node.get("isConstexpr"):
            return int(node.get("hasInit", False)) + int(node.get("hasVar", False))
        return -1

    # ---- What is changed into what

    def collect(self, node, kind, callee):
        bounds = self.bounds(node)
        if bounds is None or self.in_macro(node) and kind not in (
            "BinaryOperator", "CompoundAssignOperator"):  # fmt: skip
            return
        begin, end = bounds
        text = self.sources[self.file][begin:end]
        if kind in ("BinaryOperator", "CompoundAssignOperator"):
            self.collect_binary(node, begin, end)
        elif kind == "CXXOperatorCallExpr":
            self.collect_block(node, begin, end)
        elif kind == "UnaryOperator":
            operator = node.get("opcode")
            if operator == "!" and text.startswith("!"):
                self.add(begin, end, "!", begin, "", f"static_cast<bool>({text[1:]})")
            elif operator in ("++", "--"):
                at = begin if text.startswith(operator) else end - 2
                bare = text[2:] if at == begin else text[:-2]
                self.add(begin, end, operator, at, "", bare)
        elif kind == "IntegerLiteral" and LITERAL.fullmatch(text):
            # Instructions take some of their arguments as constants.
            if not re.match(r"_mm_|__builtin", callee):
                up = text.strip("uUlL") == "0" or hashlib.sha256(
                    f"{self.file}:{self.sources[self.file][:end].splitlines()[-1]}".encode()
                ).digest()[0] % 2
                sign = "+" if up else "-"
                self.add(begin, end, text, begin, f"{text} {sign} 1", f"{text} {sign} 1")
        elif kind == "CXXBoolLiteralExpr" and text in ("true", "false"):
            other = "false" if text == "true" else "true"
            self.add(begin, end, text, begin, other, other)

    def collect_binary(self, node, begin, end):
        operator = node.get("opcode")
        children = node.get("inner", [])
        if operator not in OPERATORS or len(children) != 2:
            return
        left, right = map(self.bounds, children)
        if left is None or right is None or not begin <= left[1] < right[0] <= end:
            return
        pointers = [child.get("type", {}).get("qualType", "").endswith("*") for child in children]
        self.add_operator(begin, end, left[1], right[0], operator, OPERATORS[operator],
                          operator == "-" and all(pointers))  # fmt: skip

    def collect_block(self, node, begin, end):
        children = node.get("inner", [])
        types = node.get("type", {})
        lanes = types.get("desugaredQualType", types.get("qualType", ""))
        if len(children) != 3 or "Lanes<" not in lanes:
            return
        left, right = map(self.bounds, children[1:])
        if left is None or right is None or not begin <= left[1] < right[0] <= end:
            return
        operator = COMMENT.sub("", self.sources[self.file][left[1] : right[0]]).strip()
        if operator in "&|" or operator in "+-" and "<unsigned char>" in lanes:
            self.add_operator(begin, end, left[1], right[0], operator, OPERATORS[operator])

    def add_operator(self, begin, end, gap, after, operator, other, refused=False):
        source = self.sources[self.file]
        between = COMMENT.sub(lambda found: " " * len(found[0]), source[gap:after])
        if between.strip() != operator:
            return  # a macro with arguments, or what the compiler wrote itself
        at = gap + between.index(operator)
        text = source[begin:at] + other + source[at + len(operator) : end]
        self.add(begin, end, operator, at, other, text, refused)

    def add(self, begin, end, token, at, change, text, refused=False):
        site = Site(self.file, begin, end, token, at, change, text)
        (self.refused if refused else self.sites).add(site)


def sites_of(root, unit, sources):
    """The sites that one source shows, in it and in the headers that it takes in."""
    command = ["clang++", "-std=c++17", "-msse3", "-I.", "-Iinclude", "-DVEKCH_BUILD",
               "-fsyntax-only", "-w", "-Xclang", "-ast-dump=json", unit]  # fmt: skip
    tree = subprocess.run(command, cwd=root, stdout=subprocess.PIPE, check=True).stdout
    reader = TreeReader(sources)
    reader.read(json.loads(tree), False, "")
    return reader.sites, reader.refused


def read_sources(root):
    return {
        str(path.relative_to(root)): path.read_text(encoding="utf-8")
        for folder in FOLDERS
        for path in sorted((root / folder).rglob("*"))
        if path.suffix in (".h", ".cpp") and str(path.relative_to(root)) not in LEFT_OUT
    }


def all_mutants(sources, sites, seed):
    """A mutant for each site, in the order of the sources, with a name that survives edits."""
    seen = collections.Counter()
    mutants = []
    for number, site in enumerate(sorted(sites)):
        line = site.line(sources[site.file])
        change = f"{site.token} to {site.change}" if site.change else f"{site.token} dropped"
        seen[site.file, line, change] += 1
        nth = seen[site.file, line, change]
        name = change if nth == 1 else f"{change}, {nth}"
        digest = hashlib.sha256(f"{seed}:{site.file}:{line}:{name}".encode()).hexdigest()
        mutants.append(Mutant(number, site, line, name, digest))
    return mutants


def choose(mutants, quotas):
    """Of each folder as many as asked for, numbered from 1."""
    chosen = []
    for folder, count in quotas.items():
        inside = [mutant for mutant in mutants if mutant.site.file.startswith(folder + "/")]
        chosen += sorted(inside, key=lambda mutant: mutant.score)[:count]
    chosen.sort(key=lambda mutant: mutant.number)
    return [mutant._replace(number=number) for number, mutant in enumerate(chosen, 1)]


def mutated(source, mutants):
    """The source of a file with all its mutants in it. Within a changed expression nothing else is
    changed, so that the text grows with the depth only."""
    ordered = sorted(mutants, key=lambda mutant: (mutant.site.begin, -mutant.site.end))

    def render(begin, end, inside):
        text, at = "", begin
        while inside:
            first = inside[0].site
            same = [m for m in inside if (m.site.begin, m.site.end) == (first.begin, first.end)]
            within = [m for m in inside[len(same) :] if m.site.end <= first.end]
            inside = inside[len(same) + len(within) :]
            kept = render(first.begin, first.end, within)
            for mutant in same:
                kept = f"(VEKCH_IS_MUTANT({mutant.number}) ? ({mutant.site.text}) : ({kept}))"
            text += source[at : first.begin] + kept
            at = first.end
        return text + source[at:end]

    return render(0, len(source), ordered)
