#!/usr/bin/env python3
"""Checks that a library exports exactly the functions of the lists given, and nothing else.

Usage: exports.py LIBRARY LIST...
"""

import subprocess
import sys


def listed(path):
    with open(path, encoding="utf-8") as lines:
        return {line.strip() for line in lines if line.strip() and not line.startswith("#")}


def exported(library):
    output = subprocess.run(
        ["nm", "-D", "--defined-only", library], capture_output=True, text=True, check=True
    ).stdout
    return {line.split()[-1] for line in output.splitlines()}


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    wanted = set().union(*(listed(path) for path in sys.argv[2:]))
    found = exported(sys.argv[1])
    for symbol in sorted(wanted - found):
        print(f"missing: {symbol}")
    for symbol in sorted(found - wanted):
        print(f"not in the list: {symbol}")
    print(f"{len(found)} symbols exported")
    sys.exit(0 if found == wanted and found else 1)


if __name__ == "__main__":
    main()
