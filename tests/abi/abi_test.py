#!/usr/bin/env python3
"""abi.py refuses what it is there to refuse: the public header is changed, and a library is built from it.

Usage: abi_test.py ROOT COMPILER
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # not into the source tree
import abi  # noqa: E402

ROOT = COMPILER = ""

# A library with one exported function, beside the function that names the types.
LIBRARY = """
#include "types.cpp"
std::shared_ptr<IPluginCallControlCallback> plugin_control::createPluginControl(const std::weak_ptr<IPluginLogger>&) {
    return {};
}
"""
ONE_FUNCTION_MORE = 'extern "C" ORVEX_API int one_more(int argument) { return argument; }\n'

PLUGIN, VIRTUAL = "orvex/headset_plugin.h", "orvex/virtual_headset.h"


class Interface(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.original = pathlib.Path(folder.name)
        first = cls()
        first.start(cls.original)
        (cls.original / "include/orvex").mkdir(parents=True)
        (cls.original / "abi").mkdir()
        first.build()
        first.run_abi(abi.record, "1.2.0")

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.start(pathlib.Path(folder.name))
        shutil.copytree(self.original, self.folder, dirs_exist_ok=True)

    def start(self, folder):
        self.folder = folder
        self.headers = {
            f"orvex/{header.name}": header.read_text(encoding="utf-8")
            for header in pathlib.Path(ROOT, "include/orvex").glob("*.h")
        }
        self.library = LIBRARY

    def build(self):
        for name, text in self.headers.items():
            (self.folder / "include" / name).write_text(text, encoding="utf-8")
        (self.folder / "library.cpp").write_text(self.library, encoding="utf-8")
        subprocess.run(
            [COMPILER, "-std=c++20", "-g", "-fPIC", "-shared", "-fvisibility=hidden", "-femit-class-debug-always",
             "-I", self.folder / "include", "-I", f"{ROOT}/tests/abi/types", self.folder / "library.cpp",
             "-o", self.folder / "libsample.so"], check=True,
        )  # fmt: skip

    def run_abi(self, command, version):
        command(str(self.folder / "abi"), str(self.folder / "libsample.so"), str(self.folder / "include"), version)

    def change(self, header, before, after):
        self.assertEqual(self.headers[header].count(before), 1, before)
        self.headers[header] = self.headers[header].replace(before, after)

    def assert_refused(self, command, version, reason):
        with self.assertRaisesRegex(abi.Refusal, reason):
            self.run_abi(command, version)

    def assert_needs_a_new_major_version(self):
        self.build()
        self.assert_refused(abi.check, "1.2.0", "is not that of 1.2.0")
        self.assert_refused(abi.check, "2.0.0", "is not that of 1.2.0")
        self.assert_refused(abi.record, "1.2.0", "new major version")
        self.assert_refused(abi.record, "1.3.0", "new major version")
        self.run_abi(abi.record, "2.0.0")
        self.run_abi(abi.check, "2.0.0")

    def test_the_same_interface_passes(self):
        self.run_abi(abi.check, "1.2.0")

    def test_another_comment_passes(self):
        self.change(PLUGIN, "#pragma once\n", "#pragma once\n// More words.\n\n")
        self.build()
        self.run_abi(abi.check, "1.2.0")

    def test_an_interface_that_was_never_recorded_is_refused(self):
        (self.folder / "abi/libsample-1.2.0.abi").unlink()
        self.assert_refused(abi.check, "1.2.0", "never recorded")

    def test_a_new_version_is_to_be_recorded(self):
        self.assert_refused(abi.check, "1.2.1", "record it")
        self.run_abi(abi.record, "1.2.1")
        self.run_abi(abi.check, "1.2.1")
        self.assert_refused(abi.record, "1.2.0", "lower than")

    def test_a_change_in_any_type(self):
        changes = (
            # An operation more, among the others or behind them.
            (PLUGIN, "    virtual void onEndCall(", "    virtual void onMore(int) = 0;\n    virtual void onEndCall("),
            (PLUGIN, "int level) = 0;\n", "int level) = 0;\n    virtual void flush() = 0;\n"),
            (PLUGIN, "onConfigKey(bool pressed) = 0;\n", "onConfigKey(bool pressed) = 0;\n    virtual void more() = 0;\n"),
            (PLUGIN, "    virtual void reservedConfig17() = 0;\n", ""),
            # Other arguments.
            (PLUGIN, "const std::string& cid, int direction)", "const std::string& cid, long direction)"),
            (PLUGIN, "std::function<bool(int, int)>", "std::function<bool(int, long)>"),
            # Data.
            (PLUGIN, "    bool mute = false;", "    std::int32_t line = 0;\n    bool mute = false;"),
            (PLUGIN, "CALL_STATE_HOLD = 3,", "CALL_STATE_HOLD = 4,"),
            (VIRTUAL, "    uint16_t product_id;", "    uint32_t product_id;"),
            (VIRTUAL, "    uint64_t time_us;", "    uint32_t time_us;"),
            (VIRTUAL, "ORVEX_VIRTUAL_FAULT_WRITE_FAILS = 3,", "ORVEX_VIRTUAL_FAULT_WRITE_FAILS = 9,"),
        )
        untouched = dict(self.headers)
        for header, before, after in changes:
            self.headers = dict(untouched)
            self.change(header, before, after)
            self.build()
            with self.subTest(after):
                self.assert_refused(abi.check, "1.2.0", "is not that of 1.2.0")
                self.assert_refused(abi.record, "1.3.0", "new major version")

    def test_two_operations_in_each_others_place(self):
        self.change(PLUGIN, "virtual void connectCall(", "virtual void swapped(")
        self.change(PLUGIN, "virtual void holdCall(", "virtual void connectCall(")
        self.change(PLUGIN, "virtual void swapped(", "virtual void holdCall(")
        self.assert_needs_a_new_major_version()

    def test_a_function_more_needs_a_new_minor_version(self):
        self.library = LIBRARY + ONE_FUNCTION_MORE
        self.build()
        self.assert_refused(abi.check, "1.2.0", "is not that of 1.2.0")
        self.assert_refused(abi.record, "1.2.1", "new minor version")
        self.run_abi(abi.record, "1.3.0")
        self.run_abi(abi.check, "1.3.0")

    def test_a_function_less_needs_a_new_major_version(self):
        self.library = '#include "types.cpp"\n'
        self.assert_needs_a_new_major_version()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    ROOT, COMPILER = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
