#!/usr/bin/env python3
"""Shows the builder of examples documents whose programs work and documents whose programs do not.

Usage: examples_test.py ROOT COMPILER VIRTUAL_LIBRARY [FLAG...]
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

BUILDER = pathlib.Path(__file__).with_name("examples.py")
DOCUMENT = """\
# Title

```cpp
// answer.h: a file beside the program.
#include <orvex/headset_plugin.h>

inline int answer() {
    return plugin_control::CALL_STATE_HOLD;
}
```

The program:

```cpp
#include "answer.h"

#include <iostream>

int main() {
    std::cout << answer() << "\\n";
}
```

It is built and prints:

    g++ -std=c++17 program.cpp $(pkg-config --cflags --libs orvex_headset_plugin) -o program

```text
3
```

Part of it:

```cpp
    std::cout << answer() << "\\n";
```
"""


class Examples(unittest.TestCase):
    def build(self, document, *options):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "document.md")
            path.write_text(document, encoding="utf-8")
            return subprocess.run(
                [sys.executable, BUILDER, "--excerpts", *options, ROOT, path, COMPILER, LIBRARY, *FLAGS],
                capture_output=True, text=True, check=False,
            )

    def assert_refused(self, old, new, reason):
        self.assertIn(old, DOCUMENT)
        result = self.build(DOCUMENT.replace(old, new))
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertIn(reason, result.stderr)

    def test_accepts_programs_that_do_what_the_document_says(self):
        result = self.build(DOCUMENT)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_refuses_a_program_that_does_not_compile(self):
        self.assert_refused("CALL_STATE_HOLD", "CALL_STATE_LOST", "CALL_STATE_LOST")

    def test_refuses_a_program_that_compiles_with_warnings(self):
        self.assert_refused("int main() {\n", "int main() {\n    int unused = 0;\n", "unused")

    def test_refuses_a_program_that_fails(self):
        self.assert_refused('"\\n";\n}', '"\\n";\n    return 1;\n}', "ends with status 1")

    def test_refuses_a_program_that_prints_something_else(self):
        self.assert_refused("```text\n3\n", "```text\n4\n", "prints\n\n3\n")

    def test_refuses_a_program_that_the_document_does_not_build(self):
        self.assert_refused("    g++", "    cc", "does not say how to build")

    def test_refuses_a_module_that_there_is_not(self):
        self.assert_refused("orvex_headset_plugin)", "headset_plugin)", "no module gives")

    def test_refuses_a_module_of_others_that_there_is_not(self):
        self.assert_refused("orvex_headset_plugin)", "orvex_headset_plugin no-such-module)", "no-such-module")

    def test_leaves_out_programs_with_modules_of_others_where_asked(self):
        document = DOCUMENT.replace("orvex_headset_plugin)", "orvex_headset_plugin no-such-module)")
        result = self.build(document, "--own-modules")
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_builds_the_other_programs_then(self):
        result = self.build(DOCUMENT.replace("CALL_STATE_HOLD", "CALL_STATE_LOST"), "--own-modules")
        self.assertIn("CALL_STATE_LOST", result.stderr)

    def test_passes_over_a_program_that_is_marked(self):
        broken = "<!-- not built -->\n```cpp\n#include <lost.h>\n\nint main() {}\n```\n"
        result = self.build(DOCUMENT + broken)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_builds_the_programs_behind_one_that_is_marked(self):
        marked = "<!-- not built -->\n```cpp\nint main() {}\n```\n\n"
        self.assert_refused("The program:\n\n```cpp\n#include", f"{marked}```cpp\n#include <lost.h>\n#include", "lost.h")

    def test_refuses_a_mark_without_a_program(self):
        self.assert_refused("The program:", "<!-- not built -->", "is no block of C++")

    def test_refuses_lines_that_stand_in_no_program(self):
        self.assert_refused('```cpp\n    std::cout << answer() << "\\n";', "```cpp\n    answer();", "no program has these lines")

    def test_refuses_a_block_that_it_would_pass_over(self):
        self.assert_refused("```cpp\n    std", "  ```cpp\n    std", "is indented")

    def test_refuses_a_document_without_a_program(self):
        self.assert_refused("int main()", "int other()", "shows no program")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    ROOT, COMPILER, LIBRARY, *FLAGS = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
