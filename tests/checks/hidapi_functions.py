#!/usr/bin/env python3
"""Checks that a list of exports has every function that hidapi's header declares.

Usage: hidapi_functions.py HEADER LIST

A client that gets some of hidapi's functions from the plug-in and others from hidapi hands the handles of the one to the
other.
"""

import re
import sys

COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.S)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.M)
DECLARATION = re.compile(r"\b(hid_\w+)\s*\([^()]*\)\s*;")


def declared(header):
    """The functions that a header declares."""
    return set(DECLARATION.findall(DIRECTIVE.sub("", COMMENT.sub("", header))))


def listed(text):
    return {line.strip() for line in text.splitlines() if line.strip() and not line.startswith("#")}


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as header, open(sys.argv[2], encoding="utf-8") as exports:
        functions, names = declared(header.read()), listed(exports.read())
    for name in sorted(functions - names):
        print(f"not exported: {name}")
    print(f"{len(functions)} functions declared")
    sys.exit(0 if functions and functions <= names else 1)


if __name__ == "__main__":
    main()
