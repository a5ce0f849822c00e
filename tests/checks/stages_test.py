#!/usr/bin/env python3
"""Runs the script `test` where the programs that it calls are stand-ins: it must refuse, count and measure.

Usage: stages_test.py ROOT
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path()

# Leaves a line for each call, and does what a test asks of it.
STAND_IN = """#!/usr/bin/env python3
import os, pathlib, sys, time
name, arguments = pathlib.Path(sys.argv[0]).name, sys.argv[1:]
with open(os.environ["CALLS"], "a") as calls:
    print(name, *arguments, file=calls)
if name == "ctest" and "--output-junit" in arguments:
    results = pathlib.Path(arguments[arguments.index("--output-junit") + 1])
    results.parent.mkdir(parents=True, exist_ok=True)
    results.write_text(f'<testsuite name="x" {os.environ["COUNTS"]}>\\n</testsuite>\\n')
if name == "cmake" and "--build" in arguments and os.environ.get("BUSY_PRESET") in arguments:
    while time.process_time() < 2.5:
        pass
sys.exit(name in os.environ.get("FAILING", "").split())
"""


class Stages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        shutil.copy(ROOT / "test", self.folder)
        self.calls = self.folder / "calls"
        self.calls.touch()
        (self.folder / "bin").mkdir()
        (self.folder / "tools").mkdir()
        for program in ("bin/cmake", "bin/ctest", "tools/setup"):
            path = self.folder / program
            path.write_text(STAND_IN, encoding="utf-8")
            path.chmod(0o755)

    def run_script(self, *arguments, **environment):
        values = {"CALLS": str(self.calls), "COUNTS": 'tests="5" failures="0" disabled="0" skipped="0"', **environment}
        return subprocess.run(
            [self.folder / "test", *arguments], capture_output=True, text=True, check=False, timeout=120,
            env={**os.environ, "PATH": f"{self.folder}/bin:{os.environ['PATH']}", **values},
        )  # fmt: skip

    def calls_of(self, name):
        return [line for line in self.calls.read_text(encoding="utf-8").splitlines() if line.startswith(name + " ")]

    def assert_nothing_was_done(self):
        self.assertEqual(self.calls.read_text(encoding="utf-8"), "")

    def rows(self, result, stage):
        rows = [line.split() for line in result.stdout.splitlines() if re.match(rf"{stage} +\d", line)]
        self.assertTrue(rows, result.stdout + result.stderr)
        return rows

    def test_help_is_printed_and_nothing_else_done(self):
        for option in ("-h", "--help"):
            result = self.run_script(option)
            self.assertEqual(result.returncode, 0)
            self.assertIn("Usage: ./test [STAGE...]", result.stdout)
            self.assertNotIn("#", result.stdout)
            self.assert_nothing_was_done()

    def test_every_preset_of_tests_is_a_stage_that_the_help_names(self):
        presets = json.loads((ROOT / "CMakePresets.json").read_text(encoding="utf-8"))["testPresets"]
        names = {preset["name"] for preset in presets if not preset.get("hidden")}
        refusal = self.run_script("no_stage").stderr
        self.assertEqual(set(refusal.split("the stages are:")[1].split()), names)
        for name in names:
            self.assertRegex(self.run_script("--help").stdout, rf"\b{name}\b")

    def test_an_unknown_stage_is_refused_before_anything_is_done(self):
        for arguments in (["no_stage"], ["dev", "no_stage"], [""], ["dev asan"], ["-x"]):
            with self.subTest(arguments):
                result = self.run_script(*arguments)
                self.assertEqual(result.returncode, 2)
                self.assertIn(f'no stage "{arguments[-1]}"', result.stderr)
                self.assertEqual(result.stdout, "")
                self.assert_nothing_was_done()

    def test_the_stages_that_are_named_are_run(self):
        result = self.run_script("asan", "dev")
        self.assertEqual(result.returncode, 0)
        built = [re.search(r"--build --preset (\w+)", call) for call in self.calls_of("cmake")]
        self.assertEqual([match[1] for match in built if match], ["asan", "dev"])

    def test_the_last_line_is_the_sum(self):
        result = self.run_script("dev", "asan", COUNTS='tests="5" failures="1" disabled="0" skipped="2"')
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout.splitlines()[-1], "4 passed, 2 failed")

    def test_each_stage_is_in_its_summary_and_in_the_table(self):
        result = self.run_script("dev", "asan", COUNTS='tests="5" failures="1" disabled="0" skipped="2"')
        for stage in ("dev", "asan"):
            rows = self.rows(result, stage)
            self.assertEqual(len(rows), 2)
            self.assertEqual(rows[0], rows[1])
            self.assertEqual(rows[0][1:3], ["2", "1"])

    def test_a_stage_is_charged_with_its_own_processor_time(self):
        stages = self.run_script("dev", "asan", BUSY_PRESET="dev")
        busy, idle = self.rows(stages, "dev")[0], self.rows(stages, "asan")[0]
        self.assertRegex(busy[3], r"^\d+:\d\d$")
        self.assertGreaterEqual(seconds(busy[4]), 2)
        self.assertLess(seconds(idle[4]), 2)

    def test_what_does_not_build_is_a_failure(self):
        result = self.run_script("dev", FAILING="cmake")
        self.assertEqual(self.rows(result, "dev")[0][1:3], ["0", "1"])
        self.assertEqual(result.stdout.splitlines()[-1], "0 passed, 1 failed")

    def test_nothing_is_run_on_a_machine_that_cannot_be_set_up(self):
        result = self.run_script("dev", FAILING="setup")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout.splitlines()[-1], "0 passed, 1 failed")
        self.assertEqual(self.calls_of("cmake"), [])


def seconds(text):
    minutes, rest = text.split(":")
    return 60 * int(minutes) + int(rest)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    ROOT = pathlib.Path(sys.argv.pop())
    unittest.main()
