#!/usr/bin/env python3
"""Holds the worked example of docs/report-parser.md to what the tool makes of it.

Usage: parser_example.py DOCUMENT HEADSET_TOOL
"""

import pathlib
import re
import subprocess
import sys
import tempfile


def block(document, language):
    blocks = re.findall(rf"```{language}\n(.*?)```", document, re.S)
    if len(blocks) != 1:
        sys.exit(f"{len(blocks)} blocks of {language} in the document, not one")
    return blocks[0]


def run(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60, check=True).stdout


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    document, tool = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"), sys.argv[2]
    with tempfile.TemporaryDirectory() as folder:
        descriptor = pathlib.Path(folder, "example.hex")
        descriptor.write_text(block(document, "hid"), encoding="utf-8")
        caps = run(tool, "caps", str(descriptor))
        lit = run(tool, "encode", str(descriptor), "08:17", "08:09").strip()
        mute = run(tool, "decode", str(descriptor), "02 02")
    if caps != block(document, "text"):
        sys.exit(f"the table is not what the tool prints:\n{caps}")
    if f"Setting Off-Hook and Mute gives `{lit}`" not in document:
        sys.exit(f"the indicators are lit by {lit}")
    if "Phone Mute (0B:2F)" not in mute:
        sys.exit(f"the mute key is read as:\n{mute}")


if __name__ == "__main__":
    main()
