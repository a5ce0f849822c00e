#!/usr/bin/env python3
"""Shows the include check files that break the rule, and files that keep it."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("includes.py")


class IncludeRule(unittest.TestCase):
    def check(self, files):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True, check=False)

    def assert_refused(self, files, reason):
        result = self.check(files)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(reason, result.stdout)

    def test_accepts_an_include_of_a_lower_layer(self):
        result = self.check({"src/hid/a.h": "", "src/drivers/b.cpp": '#include "hid/a.h"\n#include <vector>\n'})
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("2 files, 0 violations", result.stdout)

    def test_refuses_an_include_of_a_higher_layer(self):
        self.assert_refused(
            {"src/drivers/b.h": "", "src/hid/a.cpp": '#include "drivers/b.h"\n'},
            "src/hid/a.cpp:1: hid must not include drivers (drivers/b.h)",
        )

    def test_refuses_the_boundary_to_lower_layers(self):
        self.assert_refused(
            {"src/plugin/p.h": "", "src/device/a.cpp": '\n#include "plugin/p.h"\n'},
            "src/device/a.cpp:2: device must not include plugin (plugin/p.h)",
        )

    def test_refuses_a_path_that_is_not_from_the_root(self):
        self.assert_refused({"src/hid/a.h": "", "src/hid/a.cpp": '#include "a.h"\n'}, '"a.h" is not a path from src/ or the root')

    def test_refuses_system_headers_outside_the_platforms(self):
        self.assert_refused({"src/device/a.cpp": "#include <unistd.h>\n"}, "only platforms include it")

    def test_refuses_a_folder_that_is_no_layer(self):
        self.assert_refused({"src/plugin/new/a.cpp": ""}, "this folder is no layer")

    def test_refuses_an_empty_tree(self):
        self.assertNotEqual(self.check({}).returncode, 0)


if __name__ == "__main__":
    unittest.main()
