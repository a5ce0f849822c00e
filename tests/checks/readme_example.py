#!/usr/bin/env python3
"""Builds the client that the README shows, with the README's own flags, and runs it.

Usage: readme_example.py ROOT COMPILER LIBRARY_FOLDER [FLAG...]
"""

import pathlib
import re
import subprocess
import sys
import tempfile


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    root, compiler, libraries, flags = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4:]
    readme = (root / "README.md").read_text(encoding="utf-8")
    programs = [block for block in re.findall(r"```cpp\n(.*?)```", readme, re.S) if "int main()" in block]
    command = re.search(r"^    g\+\+ (.*) host\.cpp (.*) -o host$", readme, re.M)
    if len(programs) != 1 or not command:
        sys.exit("the README shows no client, or not how to build it")
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder, "host.cpp")
        source.write_text(programs[0], encoding="utf-8")
        arguments = (command.group(1) + " " + command.group(2)).replace("$PWD/build/demo/lib", libraries)
        arguments = arguments.replace("-Lbuild/demo/lib", f"-L{libraries}").split()
        program = str(pathlib.Path(folder, "host"))
        subprocess.run(
            [compiler, str(source), *arguments, *flags, "-o", program, "-Wall", "-Wextra", "-Werror"], cwd=root, check=True
        )
        result = subprocess.run([program], capture_output=True, text=True, timeout=60, check=False)
    sys.stdout.write(result.stdout)
    if result.returncode != 0 or result.stdout != "the off-hook indicator is lit\n":
        sys.stdout.write(result.stderr)
        sys.exit(f"exit status {result.returncode}")


if __name__ == "__main__":
    main()
