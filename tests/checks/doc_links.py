#!/usr/bin/env python3
"""Every link of the documents to a file or a heading of the project leads somewhere.

Usage: doc_links.py DOCUMENT...
"""

import pathlib
import re
import sys

CODE = re.compile(r"^( *)```.*?^\1```$|`[^`\n]*`", re.M | re.S)
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$", re.M)


def anchor_of(heading):
    """The anchor that Markdown viewers give a heading."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def anchors_of(path):
    return {anchor_of(heading) for heading in HEADING.findall(CODE.sub("", path.read_text(encoding="utf-8")))}


def problems_of(document):
    for link in LINK.findall(CODE.sub("", document.read_text(encoding="utf-8"))):
        if re.match(r"[a-z]+:", link):
            continue  # a page of others
        name, _, anchor = link.partition("#")
        target = document.parent / name if name else document
        if not target.exists():
            yield f"{document}: there is no {name}"
        elif anchor and anchor not in anchors_of(target):
            yield f"{document}: {name or 'the page itself'} has no heading for #{anchor}"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    problems = [problem for document in sys.argv[1:] for problem in problems_of(pathlib.Path(document))]
    sys.exit("\n".join(problems) or None)


if __name__ == "__main__":
    main()
