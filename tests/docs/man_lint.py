#!/usr/bin/env python3
"""Has groff and mandoc read a manual page, and fails at whatever they have to say.

Usage: man_lint.py PAGE GROFF MANDOC
"""

import subprocess
import sys

# The pages state no date: they are held to the programs, not to a day.
EXPECTED = 'WARNING: missing date, using "": TH'


def complaints(*command):
    result = subprocess.run(command, capture_output=True, text=True, timeout=60)
    lines = (result.stdout + result.stderr).splitlines()
    return [line for line in lines if not line.endswith(EXPECTED)]


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    page, groff, mandoc = sys.argv[1:]
    found = complaints(groff, "-man", "-ww", "-Tutf8", "-z", page) + complaints(
        mandoc, "-Tlint", "-W", "warning", page)
    if found:
        sys.exit("\n".join(found))


if __name__ == "__main__":
    main()
