#!/usr/bin/env python3
"""Shows Doxygen, with the project's settings, headers that are documented and headers that are not.

Usage: doxygen_test.py DOXYGEN DOXYFILE
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

HEADER = """\
/// \\file
/// A header.
#pragma once

/// A number of something.
struct Number {
    int value = 0;  ///< how many there are
};

/// Adds to a number.
/// \\param number  the number
/// \\param more    how much is added
/// \\return the sum
int add(Number number, int more);
"""


class Headers(unittest.TestCase):
    def run_doxygen(self, header):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "header.h")
            path.write_text(header, encoding="utf-8")
            settings = pathlib.Path(DOXYFILE).read_text(encoding="utf-8")
            settings += f"\nINPUT = {path}\nUSE_MDFILE_AS_MAINPAGE =\nOUTPUT_DIRECTORY = {folder}\n"
            return subprocess.run([DOXYGEN, "-"], input=settings, capture_output=True, text=True, check=False)

    def assert_refused(self, line, reason):
        self.assertIn(line, HEADER)
        result = self.run_doxygen(HEADER.replace(line, ""))
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(reason, result.stderr)

    def test_accepts_a_header_that_is_documented(self):
        result = self.run_doxygen(HEADER)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_refuses_an_undocumented_type(self):
        self.assert_refused("/// A number of something.\n", "Number is not documented")

    def test_refuses_an_undocumented_member(self):
        self.assert_refused("  ///< how many there are", "value")

    def test_refuses_an_undocumented_parameter(self):
        self.assert_refused("/// \\param more    how much is added\n", "parameter 'more'")

    def test_refuses_an_undocumented_result(self):
        self.assert_refused("/// \\return the sum\n", "return type of member add")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    DOXYGEN, DOXYFILE = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
