#!/usr/bin/env python3
"""Holds the tables of a document to what a program prints, which makes them with the project's own code.

Usage: tables.py [--update | --rows] [--needs FOLDER] DOCUMENT GENERATOR [ARGUMENT...]

A table stands, in the document as in what the program prints, between the lines "<!-- table: NAME -->" and
"<!-- end -->". Exit status 1 when one is missing or differs.

  --update        puts the program's tables into the document
  --rows          the rows that the program prints have to stand in the document's tables, which may have more
  --needs FOLDER  without this folder, says so and ends with status 77, for a skipped test
"""

import argparse
import difflib
import pathlib
import re
import shlex
import subprocess
import sys

SKIPPED = 77
TABLE = re.compile(r"^<!-- table: (\S+) -->\n(.*?)^<!-- end -->$", re.M | re.S)
MARKER = re.compile(r"^<!-- (?:table: .*|end) -->$", re.M)


def tables_in(text, source):
    """The tables of a text by their names."""
    found = TABLE.findall(text)
    tables = dict(found)
    if len(tables) != len(found) or len(MARKER.findall(text)) != 2 * len(found):
        sys.exit(f"{source}: the markers of the tables do not match")
    if not tables:
        sys.exit(f"{source}: there is no table")
    return tables


def has_rows_of(wanted, found):
    lines = found.splitlines()
    return all(line in lines for line in wanted.splitlines())


def difference(name, wanted, found):
    lines = difflib.unified_diff(
        found.splitlines(), wanted.splitlines(), f"{name}, as it stands", f"{name}, as the code is", n=0, lineterm=""
    )
    return "\n".join(lines)


def problems(wanted, found, agrees):
    """What is wrong with the tables found, in words."""
    for name in sorted(wanted.keys() - found.keys()):
        yield f"table {name} is missing"
    for name in sorted(found.keys() - wanted.keys()):
        yield f"table {name} is made by nothing"
    for name, text in wanted.items():
        if name in found and not agrees(text, found[name]):
            yield f"table {name} is stale\n{difference(name, text, found[name])}"


def updated(document, wanted):
    def replace(match):
        name = match.group(1)
        return f"<!-- table: {name} -->\n{wanted.get(name, match.group(2))}<!-- end -->"

    return TABLE.sub(replace, document)


def parsed(arguments):
    parser = argparse.ArgumentParser(usage=__doc__.split("Usage: ")[1])
    mode = parser.add_mutually_exclusive_group()
    mode.add_argument("--update", action="store_true")
    mode.add_argument("--rows", action="store_true")
    parser.add_argument("--needs", type=pathlib.Path)
    parser.add_argument("document", type=pathlib.Path)
    parser.add_argument("generator", nargs=argparse.REMAINDER)
    options = parser.parse_args(arguments)
    if not options.generator:
        parser.error("no program is named")
    return options


def advice(options):
    # A program that knows some of the rows only would take away the others.
    if options.rows:
        return "Change these rows by hand, or bring the table up to date where all of the program's data is there."
    command = shlex.join(["python3", __file__, "--update", str(options.document), *options.generator])
    return f"To bring it up to date: {command}"


def main(arguments):
    options = parsed(arguments)
    if options.needs and not options.needs.is_dir():
        print(f"skipped: there is no folder {options.needs}")
        sys.exit(SKIPPED)
    document = options.document.read_text(encoding="utf-8")
    printed = subprocess.run(options.generator, stdout=subprocess.PIPE, text=True, timeout=300, check=True).stdout
    wanted = tables_in(printed, options.generator[0])
    if options.update:
        document = updated(document, wanted)
        options.document.write_text(document, encoding="utf-8")
    agrees = has_rows_of if options.rows else str.__eq__
    found = list(problems(wanted, tables_in(document, options.document), agrees))
    if found:
        sys.exit("\n".join([f"{options.document} is not what the code does:", *found, advice(options)]))


if __name__ == "__main__":
    main(sys.argv[1:])
