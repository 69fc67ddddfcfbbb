#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Every link of the pages to a file of the tree, or to a heading in one, leads somewhere.

check_links.py TREE
"""

import pathlib
import re
import sys

LINK = re.compile(r"\]\(([^)\s]+)\)")
CODE = re.compile(r"```.*?```|`[^`\n]*`", re.DOTALL)


def headings(text):
    """As they are written in links: small letters, digits, hyphens."""
    titles = re.findall(r"^#+ (.+)$", re.sub(r"```.*?```", "", text, flags=re.DOTALL), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def main(tree):
    pages = [*tree.glob("*.md"), *(p for f in ("docs", "bindings", "examples", "bench", "fuzz", "tests")
                                   for p in tree.joinpath(f).rglob("*.md"))]
    links = [(page, link) for page in pages
             for link in LINK.findall(CODE.sub("", page.read_text(encoding="utf-8")))
             if not re.match(r"[a-z]+:", link)]
    dead = []
    for page, link in links:
        name, _, heading = link.partition("#")
        target = page.parent / name if name else page
        if not target.exists() or heading and heading not in headings(target.read_text("utf-8")):
            dead.append(f"{page.relative_to(tree)}: {link}")
    print(f"{len(links)} links in {len(pages)} pages", *dead, sep="\n")
    return 1 if dead or not links else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
