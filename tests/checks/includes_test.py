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
            "src/hid/a.cpp:1: hid must not reach up into drivers (drivers/b.h)",
        )

    def test_refuses_the_boundary_to_lower_layers(self):
        self.assert_refused(
            {"src/plugin/p.h": "", "src/device/a.cpp": '\n#include "plugin/p.h"\n'},
            "src/device/a.cpp:2: device must not reach up into plugin (plugin/p.h)",
        )

    def test_refuses_a_lower_layer_that_is_none_of_its_own(self):
        self.assert_refused(
            {"src/hid/h.h": "", "src/callstate/a.cpp": '#include "hid/h.h"\n'},
            "src/callstate/a.cpp:1: callstate must not reach up into hid (hid/h.h)",
        )
        self.assert_refused(
            {"src/callstate/c.h": "", "src/hid/a.cpp": '#include "callstate/c.h"\n'},
            "src/hid/a.cpp:1: hid must not include callstate (callstate/c.h)",
        )

    def test_refuses_an_arrow_from_the_platforms_to_the_virtual_headsets(self):
        self.assert_refused(
            {"src/virtual_headset/v.h": "", "src/platform/common/a.cpp": '#include "virtual_headset/v.h"\n'},
            "platform/common must not reach up into virtual_headset (virtual_headset/v.h)",
        )

    def test_refuses_a_table_that_lets_a_layer_reach_up(self):
        with tempfile.TemporaryDirectory() as folder:
            check = pathlib.Path(folder, "includes.py")
            text = CHECK.read_text(encoding="utf-8")
            check.write_text(text.replace('    "hid": BASE,', '    "hid": BASE | {"plugin"},'), encoding="utf-8")
            self.assertNotEqual(check.read_text(encoding="utf-8"), text)
            for name in ("src/plugin/p.h", "src/hid/a.cpp"):
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True)
                path.write_text('#include "plugin/p.h"\n' if name.endswith(".cpp") else "", encoding="utf-8")
            result = subprocess.run([sys.executable, check, folder], capture_output=True, text=True, check=False)
            self.assertEqual(result.returncode, 1)
            self.assertIn("hid must not reach up into plugin", result.stdout)

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
