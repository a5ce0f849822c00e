#!/usr/bin/env python3
"""The documents name the libraries and packages of this major version.

Usage: doc_versions.py MAJOR DOCUMENT...
"""

import pathlib
import re
import sys

NUMBERED = re.compile(r"liborvex_\w+\.so\.(\d+)|liborvex-headset-plugin(?:-virtual)?(\d+)")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    major, documents = sys.argv[1], sys.argv[2:]
    found = [
        (pathlib.Path(document).name, match.group(), match.group(1) or match.group(2))
        for document in documents
        for match in NUMBERED.finditer(pathlib.Path(document).read_text(encoding="utf-8"))
    ]
    stale = [f"{document}: {name}, but this is version {major}" for document, name, number in found if number != major]
    if stale or not found:
        sys.exit("\n".join(stale) or "no document names a library by its number: the pattern is out of date")


if __name__ == "__main__":
    main()
