# SPDX-License-Identifier: MIT
"""Plots of a run: for each group of families an SVG with a panel for each family.

A point is a cell. The heavy line is the geometric mean over the cells of about one size, beside the
C library held to SSE2, and the dashed one the same as it is. Families without sizes, those of the
regular expressions, have a row for each pattern and a mark for each peer. Of growth the times are drawn.
"""

import math
from collections import defaultdict

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({
    "svg.hashsalt": "vekch",  # the same names in every run, so that plots differ where figures do
    "svg.fonttype": "none",
    "font.size": 9,
    "axes.spines.top": False,
    "axes.spines.right": False,
})
import matplotlib.pyplot as pyplot  # noqa: E402 (after the choice of the backend)

from bench_runs import NAIVE, OURS, mean  # noqa: E402

HELD, FREE, LOSS = "#1f5a99", "#c06a1f", "#f4dcd6"
PEER_MARKS = "osD^vP"
AT_LIMIT = " (limit)"


def by_size(cells):
    """Sizes, to the nearest power of two, and the means there."""
    ratios = defaultdict(list)
    for cell in cells:
        ratios[round(math.log2(max(cell.size, 1)))].append(cell.ratio)
    return [(2**power, mean(ratios[power])) for power in sorted(ratios)]


def scale_ratios(axis):
    axis.set_major_locator(matplotlib.ticker.LogLocator(base=2))
    axis.set_major_formatter(matplotlib.ticker.FuncFormatter(lambda value, _: f"{value:g}"))
    axis.set_minor_locator(matplotlib.ticker.NullLocator())


def size_name(size, _=None):
    for unit, name in ((1 << 20, "M"), (1 << 10, "K")):
        if size >= unit:
            return f"{size / unit:g}{name}"
    return f"{size:g}"


def panel_by_size(axes, family, held, free):
    fair = [cell for cell in held if cell.peer not in NAIVE]
    naive = [cell for cell in held if cell.peer in NAIVE]
    axes.axhspan(1e-6, 1, color=LOSS, zorder=0, lw=0)
    axes.scatter([c.size for c in fair], [c.ratio for c in fair], s=7, color=HELD, alpha=0.45, lw=0)
    axes.scatter([c.size for c in naive], [c.ratio for c in naive], s=9, facecolors="none",
                 edgecolors=HELD, alpha=0.45, lw=0.6)
    for cells, color, style, label in ((free, FREE, "--", "as it is"), (held, HELD, "-", "held to SSE2")):
        line = by_size([cell for cell in cells if cell.peer not in NAIVE] or cells)
        axes.plot(*zip(*line), style, color=color, lw=1.6, label=label)
    axes.set_xscale("log", base=2)
    axes.set_yscale("log", base=2)
    axes.set_xlim(0.7, max(cell.size for cell in held) * 1.5)
    ratios = [cell.ratio for cell in held + free]
    axes.set_ylim(min(0.4, min(ratios) * 0.9), max(2.5, max(ratios) * 1.1))
    axes.xaxis.set_major_locator(matplotlib.ticker.LogLocator(base=8, numticks=20))
    axes.xaxis.set_major_formatter(matplotlib.ticker.FuncFormatter(size_name))
    axes.xaxis.set_minor_locator(matplotlib.ticker.NullLocator())
    scale_ratios(axes.yaxis)
    axes.set_title(family, loc="left", fontsize=9)
    axes.set_xlabel("bytes")


def panel_by_case(axes, family, held):
    peers = list(dict.fromkeys(peer for cell in held for peer in cell.ratios))
    axes.axvspan(1e-6, 1, color=LOSS, zorder=0, lw=0)
    for mark, peer in zip(PEER_MARKS, peers):
        places = [i for i, cell in enumerate(held) if peer in cell.ratios]
        axes.scatter([held[i].ratios[peer] for i in places], places, s=14, marker=mark, label=peer, lw=0)
    axes.set_xscale("log", base=2)
    ratios = [ratio for cell in held for ratio in cell.ratios.values()]
    axes.set_xlim(min(0.4, min(ratios) * 0.9), max(2.5, max(ratios) * 1.1))
    scale_ratios(axes.xaxis)
    axes.set_yticks(range(len(held)), [cell.case for cell in held])
    axes.invert_yaxis()
    axes.tick_params(axis="y", length=0)
    axes.set_title(family, loc="left", fontsize=9)


def has_sizes(cells):
    return len({cell.case for cell in cells}) < len(cells)


def plot(path, families, held, free):
    """`held` and `free`: the cells of each family."""
    sized = [family for family in families if has_sizes(held[family])]
    rows = max(len(held[family]) for family in families)
    height = 2.7 if sized else 0.9 + 0.19 * rows
    figure, panels = pyplot.subplots(1, len(families), figsize=(3.3 * max(len(families), 2), height),
                                     squeeze=False, layout="constrained")
    for axes, family in zip(panels[0], families):
        if family in sized:
            panel_by_size(axes, family, held[family], free[family])
        else:
            panel_by_case(axes, family, held[family])
    panels[0][0].legend(frameon=False, fontsize=7, loc="best")
    if sized:
        panels[0][0].set_ylabel("peer's time over ours")
    else:
        figure.supxlabel("peer's time over ours, held to SSE2", fontsize=9)
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    pyplot.close(figure)


def panel_of_growth(axes, case, cells, colors):
    for name, color in colors.items():
        points = [(cell.bytes, cell.times[name]) for cell in cells if name in cell.times]
        ends = [(cell.bytes, cell.times[name + AT_LIMIT]) for cell in cells if name + AT_LIMIT in cell.times]
        axes.plot(*zip(*(points + ends)), "-", color=color, lw=2.2 if name == OURS else 1.2, label=name)
        axes.scatter(*zip(*(ends or [(None, None)])), s=40, marker="x", color=color, zorder=3)
    axes.set_xscale("log", base=2)
    axes.set_yscale("log")
    axes.set_xticks([cell.bytes for cell in cells], [str(cell.bytes) for cell in cells])
    axes.xaxis.set_minor_locator(matplotlib.ticker.NullLocator())
    axes.yaxis.set_major_locator(matplotlib.ticker.FixedLocator([10**power for power in range(1, 10, 2)]))
    axes.yaxis.set_major_formatter(matplotlib.ticker.FuncFormatter(time_name))
    axes.set_ylim(30, 1e9)
    axes.set_title(case, loc="left", fontsize=9)
    axes.set_xlabel("bytes")


def time_name(nanoseconds, _=None):
    for unit, name in ((1e9, "s"), (1e6, "ms"), (1e3, "us")):
        if nanoseconds >= unit:
            return f"{nanoseconds / unit:g} {name}"
    return f"{nanoseconds:g} ns"


def plot_growth(path, cells):
    """A panel for each case, a line for each contender, a cross where one gave up at its limit."""
    cases = list(dict.fromkeys(cell.case for cell in cells))
    names = list(dict.fromkeys(name.removesuffix(AT_LIMIT) for cell in cells for name in cell.times))
    colors = dict(zip(names, (HELD, "#3d8b40", FREE, "#8a4f9e")))
    columns = 4
    rows = -(-len(cases) // columns)
    figure, panels = pyplot.subplots(rows, columns, figsize=(2.7 * columns, 2.4 * rows), squeeze=False,
                                     sharey=True, layout="constrained")
    for axes, case in zip(panels.flat, cases):
        panel_of_growth(axes, case, [cell for cell in cells if cell.case == case], colors)
    for axes in panels.flat[len(cases):]:
        axes.axis("off")
    figure.legend(*panels[0][0].get_legend_handles_labels(), frameon=False, fontsize=9, loc="lower right")
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    pyplot.close(figure)
