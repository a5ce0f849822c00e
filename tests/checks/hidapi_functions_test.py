#!/usr/bin/env python3
"""Shows the check of hidapi's functions headers with functions that the plug-in has, and with one that it lacks.

Usage: hidapi_functions_test.py HEADER LIST
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("hidapi_functions.py")
MORE = "int HID_API_EXPORT HID_API_CALL hid_made_up(hid_device *dev,\n\tunsigned char *data, size_t length);\n"


class HidapiFunctions(unittest.TestCase):
    def check(self, header):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "hidapi.h")
            path.write_text(header, encoding="utf-8")
            return subprocess.run(
                [sys.executable, CHECK, path, EXPORTS], capture_output=True, text=True, check=False
            )

    def test_accepts_the_header_as_it_is(self):
        self.assertEqual(self.check(HEADER).returncode, 0)

    def test_finds_every_function_of_the_header(self):
        result = self.check(HEADER + MORE)
        self.assertIn("not exported: hid_made_up\n", result.stdout)
        self.assertEqual(result.returncode, 1)

    def test_passes_over_comments_and_macros(self):
        header = HEADER + "/* int hid_made_up(void); */\n// int hid_made_up(void);\n#define F \\\n int hid_made_up(void);\n"
        self.assertEqual(self.check(header).returncode, 0)

    def test_refuses_a_header_without_functions(self):
        self.assertEqual(self.check("").returncode, 1)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    HEADER = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    EXPORTS = sys.argv[2]
    unittest.main(argv=sys.argv[:1])
