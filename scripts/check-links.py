#!/usr/bin/env python3
"""Checks that what the documents point to is there: files and pictures, headings, and files named in `code`.

Usage: check-links.py [ROOT]
"""

import pathlib
import re
import sys

LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
# A path of ours in the text: `worker/codec/CodecTable.cpp`, with a folder in front and a suffix behind.
NAMED = re.compile(
    r"`((?:cmake|docs|examples|benches|desktop|filesystem|host|platform|processbridge|property|quicktime|scripts|tests|"
    r"timecode|worker|writer)/[\w./-]+\.(?:h|cpp|md|py|sh|txt|cmake|dot))`")
FENCE = re.compile(r"^```.*?^```", re.MULTILINE | re.DOTALL)


def anchors(path):
    """The names under which a page's headings can be reached."""
    for heading in re.findall(r"^#+ +(.*)$", path.read_text(encoding="utf-8"), re.MULTILINE):
        text = re.sub(r"[`*]|\[([^\]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
        yield re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def faults(root):
    for page in sorted(path for path in root.rglob("*.md") if "build" not in path.relative_to(root).parts):
        text = FENCE.sub("", page.read_text(encoding="utf-8"))
        for target in LINK.findall(text):
            if re.match(r"[a-z]+:", target):
                continue
            name, _, anchor = target.partition("#")
            there = page.parent / name if name else page
            if not there.exists():
                yield f"{page.relative_to(root)}: {target} is not there"
            elif anchor and there.suffix == ".md" and anchor not in anchors(there):
                yield f"{page.relative_to(root)}: {target}: there is no such heading"
        for name in NAMED.findall(text):
            if not (root / name).exists():
                yield f"{page.relative_to(root)}: names {name}, which is not there"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    found = list(faults(root))
    print("\n".join(found) or "everything that the documents point to is there")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
