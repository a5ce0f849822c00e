#!/usr/bin/env python3
"""Shows that tables.py refuses documents whose tables are stale, and brings them up to date.

Usage: tables_test.py DOCUMENT GENERATOR [ARGUMENT...]

Each table of the document, brought up to date beforehand, is changed in turn, in a copy. The generator runs once; what it
printed is printed again for each.
"""

import contextlib
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the folder of the sources stays as it is

import tables

OTHER_TABLE = "<!-- table: other -->\n| |\n<!-- end -->\n"

document, printed = "", ""


@contextlib.contextmanager
def copies(text):
    """A copy of the document with this text, and the command that prints what the generator did."""
    with tempfile.TemporaryDirectory() as folder:
        copy, output = pathlib.Path(folder, "document.md"), pathlib.Path(folder, "printed.md")
        copy.write_text(text, encoding="utf-8")
        output.write_text(printed, encoding="utf-8")
        yield copy, ["cat", str(output)]


def check(text, *options):
    """What the check ends with, None when all is well, and the text that it left."""
    with copies(text) as (copy, generator), contextlib.redirect_stdout(io.StringIO()):
        end = None
        try:
            tables.main([*options, str(copy), *generator])
        except SystemExit as refusal:
            end = refusal.code
        return end, copy.read_text(encoding="utf-8")


def changes_of(table):
    """A table with a cell changed, with a row too few, and with a row too many."""
    lines = table.splitlines(keepends=True)
    last = max(i for i, line in enumerate(lines) if line.startswith("|"))
    before, row, after = lines[:last], lines[last], lines[last + 1 :]
    return {
        "a changed cell": "".join([*before, row.replace(" |", "? |", 1), *after]),
        "a lost row": "".join([*before, *after]),
        "a row too many": "".join([*before, row, row, *after]),
    }


class Stale(unittest.TestCase):
    def assert_refused(self, complaint, text, *options):
        end, _ = check(text, *options)
        self.assertIsInstance(end, str)
        self.assertIn(complaint, end)

    def assert_accepted(self, text, *options):
        self.assertEqual(check(text, *options), (None, text))

    def test_the_document_as_it_stands_is_accepted(self):
        self.assert_accepted(document)
        self.assert_accepted(document, "--rows")

    def test_changed_tables_are_refused_and_mended(self):
        for name, table in tables.tables_in(document, "document").items():
            for change, changed in changes_of(table).items():
                with self.subTest(table=name, change=change):
                    stale = document.replace(table, changed)
                    self.assert_refused(f"table {name} is stale", stale)
                    self.assertEqual(check(stale, "--update"), (None, document))

    def test_of_rows_those_that_are_changed_or_lost_are_refused(self):
        for name, table in tables.tables_in(document, "document").items():
            with self.subTest(table=name):
                changes = changes_of(table)
                for change in ("a changed cell", "a lost row"):
                    self.assert_refused(f"table {name} is stale", document.replace(table, changes[change]), "--rows")
                self.assert_accepted(document.replace(table, changes["a row too many"]), "--rows")

    def test_a_table_that_is_missing_is_refused(self):
        for name, table in tables.tables_in(document, "document").items():
            with self.subTest(table=name):
                block = f"<!-- table: {name} -->\n{table}<!-- end -->\n"
                self.assert_refused(f"table {name} is missing", document.replace(block, OTHER_TABLE))

    def test_a_table_that_nothing_makes_is_refused(self):
        self.assert_refused("table other is made by nothing", document + OTHER_TABLE)

    def test_markers_that_do_not_match_are_refused(self):
        self.assert_refused("the markers of the tables do not match", document.replace("<!-- end -->", "", 1))

    def test_a_refusal_says_what_to_do_and_fails_the_test(self):
        with copies(document + OTHER_TABLE) as (copy, generator):
            command = [sys.executable, tables.__file__, str(copy), *generator]
            result = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
            self.assertEqual(result.returncode, 1)
            self.assertIn(f"--update {copy} {' '.join(generator)}", result.stderr)

    def test_without_a_folder_that_is_needed_the_check_is_skipped(self):
        self.assertEqual(check(document, "--needs", "/nonexistent"), (tables.SKIPPED, document))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    printed = subprocess.run(sys.argv[2:], stdout=subprocess.PIPE, text=True, timeout=300, check=True).stdout
    made = tables.tables_in(printed, sys.argv[2])
    document = tables.updated(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"), made)
    unittest.main(argv=sys.argv[:1])
