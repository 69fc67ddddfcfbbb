#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes the pages on performance from the last kept run.

    tools/bench_report.py

docs/performance.md           its measured part: means, plots, losses
docs/performance-tables.md    every cell
docs/performance/*.svg        a plot for each group of families
"""

import pathlib
import re
from collections import defaultdict

import bench_plots
from bench_runs import NAIVE, kept_runs, mean

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
BEGIN = "<!-- measured: scripts/bench --update-docs writes from here -->"
END = "<!-- measured: to here -->"
MOST = 1 << 20  # bytes that the means take in
GROWTH = "growth"  # shown by a picture of its times alone, which the page's own text shows

# What belongs together; a family that is not named here has a plot of its own.
GROUPS = {
    "Searching for a byte": ["find_byte", "find_last_byte"],
    "Searching for a string": ["find_string", "find_last_string"],
    "Searching zero-terminated strings": ["find_byte_z", "find_string_z"],
    "Searching for a set": ["find_set", "find_last_set"],
    "Comparing": ["compare", "equal", "compare_ignore_case"],
    "Case mapping": ["case"],
    "Copying and filling": ["block_copy", "block_move", "block_fill"],
    "Editing": ["concat", "insert", "insert_and_remove", "remove"],
    "Lists and fields": ["concat_list", "split"],
    "Replacing a byte": ["replace"],
    "Trimming": ["trim_byte", "trim_set"],
    "Hashes": ["hash"],
    "UTF-8 and UTF-16": ["utf8_to_utf16", "utf16_to_utf8"],
    "Searching with patterns": ["search", "search_lines", "search_fields", "search_texts"],
    "Replacing with patterns": ["replace_pattern"],
    "Compiling patterns": ["compile"],
}

# How patterns do beside each engine: by what is searched, and beside whom.
KINDS = {
    "short subjects": ["search_lines", "search_fields"],
    "long texts": ["search", "search_texts"],
    "replacing": ["replace_pattern"],
}
ENGINES = {"PCRE2 JIT": "pcre2 jit", "RE2": "re2", "PCRE2 interpreter": "pcre2"}


def size_name(size):
    for unit, name in ((1 << 20, "MiB"), (1 << 10, "KiB")):
        if size >= unit and size % unit == 0:
            return f"{size // unit} {name}"
    return f"{size} B"


def place_of(cell, cells):
    """The case, and its size where it has several."""
    several = any(other.case == cell.case and other is not cell for other in cells)
    return f"{cell.case}, {size_name(cell.bytes)}" if several else cell.case


def by_family(table):
    cells = defaultdict(list)
    for cell in table.values():
        if cell.family != GROWTH:
            cells[cell.family].append(cell)
    return cells


def grouped(families):
    groups = {name: [family for family in members if family in families] for name, members in GROUPS.items()}
    named = {family for members in groups.values() for family in members}
    groups.update({family: [family] for family in families if family not in named})
    return {name: members for name, members in groups.items() if members}


def file_name(group):
    return re.sub(r"[^a-z0-9]+", "-", group.lower()).strip("-") + ".svg"


def two(value):
    return "" if value is None else f"{value:.2f}"


def table_of(head, rows):
    lines = ["| " + " | ".join(head) + " |", "| --- |" + " ---: |" * (len(head) - 1)]
    return lines + ["| " + " | ".join(row) + " |" for row in rows]


def figures(cells):
    """Number, mean and worst of the cells that count for the means."""
    fair = [c for c in cells if c.size <= MOST and c.peer not in NAIVE or c.family.startswith("search")]
    if not fair:
        return "0", "", ""
    worst = min(fair, key=lambda cell: cell.ratio)
    return str(len(fair)), two(mean(cell.ratio for cell in fair)), f"{worst.ratio:.2f} ({place_of(worst, cells)})"


def means(groups, held, free):
    rows = []
    for members in groups.values():
        for family in members:
            count, average, worst = figures(held[family])
            if average:
                _, average_free, worst_free = figures(free[family])
                rows.append([family, count, average, worst, average_free, worst_free.split(" ")[0]])
    head = ["Family", "Cells", "Mean", "Worst cell", "Mean, as it is", "Worst, as it is"]
    return table_of(head, rows)


def beside_engines(held):
    """The mean and the worst cell of each kind, beside each engine."""
    rows = []
    for kind, families in KINDS.items():
        row = [kind]
        for peer in ENGINES.values():
            cells = [cell for family in families for cell in held.get(family, []) if peer in cell.ratios]
            if cells:
                worst = min(cells, key=lambda cell: cell.ratios[peer])
                average = mean(cell.ratios[peer] for cell in cells)
                row.append(f"{average:.2f}; {worst.ratios[peer]:.2f} ({worst.case})")
            else:
                row.append("")
        rows.append(row)
    return table_of(["Mean; worst cell", *ENGINES], rows)


def beside_loops(families, held):
    rows = []
    for family in families:
        naive = [cell for cell in held[family] if cell.peer in NAIVE]
        if naive:
            rows.append([family, str(len(naive)), two(mean(c.ratio for c in naive)), two(min(c.ratio for c in naive))])
    return table_of(["Family", "Cells", "Mean", "Worst cell"], rows)


def losses(groups, held):
    """A line for each family: how many cells, and the case where it is worst for each peer."""
    lines = []
    for members in groups.values():
        for family in members:
            behind = sorted((c for c in held[family] if c.ratio < 1), key=lambda cell: cell.ratio)
            if not behind:
                continue
            worst = {}
            for cell in behind:
                worst.setdefault(cell.case, cell)
            shown = [f"{place_of(c, held[family])} {c.ratio:.2f} ({c.peer})" for c in list(worst.values())[:4]]
            more = "; ..." if len(worst) > 4 else ""
            lines.append(f"- **{family}**, {len(behind)} of {len(held[family])} cells: {'; '.join(shown)}{more}")
    return lines or ["None."]


def measured_part(run, groups, held, free):
    lines = ["## At a glance", ""]
    lines += ["Above 1 we are faster. Beside the C library held to SSE2 unless a column says otherwise; geometric"]
    lines += ["means over 1 B to 1 MiB, without the cells whose fastest peer is a naive loop.", ""]
    lines += means(groups, held, free)
    lines += ["", "Where no one has made anything faster than a naive loop:", ""]
    lines += beside_loops([family for members in groups.values() for family in members], held)
    lines += ["", 'Patterns beside each engine, told of in the section "Searching with patterns":', ""]
    lines += beside_engines(held)
    lines += ["", *(f"- {line[0].upper()}{line[1:]}" for line in run.machine), ""]
    lines += ["Every cell: [performance-tables.md](performance-tables.md).", "", "## In pictures", ""]
    lines += ["A point is a case at a size, the heavy line the mean beside the C library held to SSE2, the dashed"]
    lines += ["one as it is; a hollow point has a naive loop for its fastest peer. In the tinted part we are"]
    lines += ["behind."]
    for name in groups:
        lines += ["", f"### {name}", "", f"![Ratios by size](performance/{file_name(name)})"]
    lines += ["", "## Where we are behind", ""]
    lines += ["All cells below 1, held to SSE2, the worst case of each family first; naive loops included.", ""]
    return "\n".join(lines + losses(groups, held))


def cell_text(held, free):
    if held is None:
        return ""
    text = f"**{held.ratio:.2f}**" if held.ratio < 1 else f"{held.ratio:.2f}"
    return text + (f" ({free.ratio:.2f})" if free else "")


def family_table(cells, free):
    """A row for each case and a column for each size, or for each peer where there are no sizes."""
    free = {(cell.case, cell.bytes): cell for cell in free}
    if not bench_plots.has_sizes(cells):
        peers = list(dict.fromkeys(peer for cell in cells for peer in cell.ratios))
        rows = [[cell.case, *(two(cell.ratios.get(peer)) for peer in peers)] for cell in cells]
        return table_of(["Case", *peers], rows)
    lines = []
    single = [cell for cell in cells if cell.size == cell.bytes]
    many = [cell for cell in cells if cell.size != cell.bytes]
    sizes = sorted({cell.bytes for cell in single})
    for part in (sizes[i : i + 9] for i in range(0, len(sizes), 9)):
        rows = []
        for case in dict.fromkeys(cell.case for cell in single):
            at = {cell.bytes: cell for cell in single if cell.case == case}
            row = [cell_text(at.get(size), free.get((case, size))) for size in part]
            if any(row):
                rows.append([case, *row])
        lines += ["", *table_of(["Case", *map(size_name, part)], rows)]
    if many:
        rows = [[f"{c.case}, {size_name(c.bytes)} in all", cell_text(c, free.get((c.case, c.bytes)))] for c in many]
        lines += ["", *table_of(["Many calls", "each"], rows)]
    return lines[1:]


def tables_page(run, groups, held, free):
    lines = ["# Performance: every cell", ""]
    lines += ["Written by `scripts/bench --update-docs`; what a figure is: [performance.md](performance.md). The"]
    lines += ["fastest peer's time over ours, held to SSE2 first, in brackets as it is; bold where we are behind.", ""]
    lines += [f"- {line[0].upper()}{line[1:]}" for line in run.machine]
    for members in groups.values():
        for family in members:
            peers = ", ".join(dict.fromkeys(peer for cell in held[family] for peer in cell.ratios))
            lines += ["", f"## {family}", "", f"Beside {peers}.", ""]
            lines += family_table(held[family], free[family])
    return "\n".join(lines) + "\n"


def main():
    run = kept_runs()[0]
    growth = [cell for cell in run.table("as-is").values() if cell.family == GROWTH]
    held, free = by_family(run.table("sse2")), by_family(run.table("as-is"))
    groups = grouped(held)
    folder = DOCS / "performance"
    folder.mkdir(exist_ok=True)
    for old in folder.glob("*.svg"):
        if growth or old.name != file_name(GROWTH):
            old.unlink()
    if growth:
        bench_plots.plot_growth(folder / file_name(GROWTH), growth)
    for name, members in groups.items():
        bench_plots.plot(folder / file_name(name), members, held, free)
    (DOCS / "performance-tables.md").write_text(tables_page(run, groups, held, free))
    page = DOCS / "performance.md"
    replaced, count = re.subn(
        re.escape(BEGIN) + ".*?" + re.escape(END),
        lambda _: f"{BEGIN}\n\n{measured_part(run, groups, held, free)}\n\n{END}",
        page.read_text(),
        flags=re.DOTALL,
    )
    if count != 1:
        raise SystemExit(f"{page} must have the two marker lines once")
    page.write_text(replaced)


if __name__ == "__main__":
    main()
