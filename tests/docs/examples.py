#!/usr/bin/env python3
"""Builds the C++ programs that a document shows, with the document's own commands, and runs them.

Usage: examples.py [--excerpts] [--own-modules] ROOT DOCUMENT COMPILER VIRTUAL_LIBRARY [FLAG...]

A block of C++ with main() is a program. It is built by the next g++ command, and has to end with status 0 and to print
what the block of text behind it shows, if there is one. A block that begins with `// NAME.h` is that file. A block behind
the line "<!-- not built -->" is passed over. The commands run where `include` and `build/demo/lib` are those of the project;
of the project's modules, a pkg-config command gives the flags that the installed module would. Under the product library's
name, too, stands the virtual one.

With --excerpts, every other block of C++ has to stand, line by line, in one of the programs or files. With --own-modules,
programs that use modules of others are not built: ThreadSanitizer sees no locks of libraries that are built without it.
"""

import argparse
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
NOT_BUILT = re.compile(r"^<!-- not built -->\n```cpp\n.*?^```$", re.M | re.S)
HEADER = re.compile(r"// (\w+\.h)\b")
COMMAND = re.compile(r"^    (g\+\+ .*) -o (\S+)$", re.M)
PKG_CONFIG = re.compile(r"\$\(pkg-config (.*?)\)")
LIBRARIES = ("orvex_headset_plugin", "orvex_headset_plugin_virtual")


class Failure(Exception):
    """What is wrong, for people."""


class Program:
    """A program of a document, with what the document says of it."""

    def __init__(self, code, following):
        command = COMMAND.search(following)
        if not command:
            raise Failure(f"the document does not say how to build\n\n{code}")
        self.code = code
        self.command, self.name = command.groups()
        sources = re.findall(r"\S+\.cpp\b", self.command)
        if len(sources) != 1:
            raise Failure(f"not one source file: {command[0]}")
        self.source = sources[0]
        output = re.search(r"^```text\n(.*?)^```$", following, re.M | re.S)
        self.output = output and output[1]


def is_program(code):
    return re.search(r"^int main\(", code, re.M) is not None


def parse(document):
    """The programs of a document, its header files by their names, and its other blocks of C++."""
    document, _ = NOT_BUILT.subn("", document)
    if "<!-- not built -->" in document:
        raise Failure("what is not built is no block of C++")
    blocks = [block for block in BLOCK.finditer(document) if block[1] == "cpp"]
    if len(blocks) != document.count("```cpp"):
        raise Failure("a block of C++ is indented, or has no end")
    ends = [block.start() for block in blocks[1:]] + [len(document)]
    programs, headers, fragments = [], {}, []
    for block, end in zip(blocks, ends):
        code, header = block[2], HEADER.match(block[2])
        if header:
            headers[header[1]] = code
        elif is_program(code):
            programs.append(Program(code, document[block.end():end]))
        else:
            fragments.append(code)
    if not programs:
        raise Failure("the document shows no program")
    return programs, headers, fragments


def normalized(code):
    """The lines of a piece of code, without indentation and empty lines."""
    return "\n" + "".join(f"{line.strip()}\n" for line in code.splitlines() if line.strip())


def check_excerpts(fragments, wholes):
    wholes = [normalized(whole) for whole in wholes]
    for fragment in fragments:
        if not any(normalized(fragment) in whole for whole in wholes):
            raise Failure(f"no program has these lines:\n\n{fragment}")


def modules_of(match):
    """The modules that a pkg-config command names: one of the project, and those of others."""
    own, *others = [word for word in match[1].split() if not word.startswith("--")] or [""]
    return own, others


def uses_others(program):
    return any(modules_of(match)[1] for match in PKG_CONFIG.finditer(program.command))


def pkg_config(match):
    """What pkg-config says of a module of the project, once it is installed; other modules are asked of pkg-config."""
    own, others = modules_of(match)
    options = [word for word in match[1].split() if word.startswith("--")]
    flags = {"--cflags": ["-Iinclude"], "--libs": ["-Lbuild/demo/lib", f"-l{own}"]}
    if own not in LIBRARIES or not set(options) <= set(flags):
        raise Failure(f"no module gives {match[0]}")
    words = [flag for option in options for flag in flags[option]]
    if others:
        installed = subprocess.run(["pkg-config", *options, *others], capture_output=True, text=True, check=False)
        if installed.returncode != 0:
            raise Failure(installed.stderr)
        words.append(installed.stdout.strip())
    return " ".join(words)


def lay_out(folder, root, library):
    """What the commands of a document find around them."""
    (folder / "include").symlink_to(root / "include")
    libraries = folder / "build/demo/lib"
    libraries.mkdir(parents=True)
    major = library.name.split(".so.")[1].split(".")[0]
    for name in LIBRARIES:
        for suffix in (".so", f".so.{major}"):
            (libraries / f"lib{name}{suffix}").symlink_to(library)
    return libraries


def run_program(program, folder, libraries, compiler, flags):
    (folder / program.source).write_text(program.code, encoding="utf-8")
    command = PKG_CONFIG.sub(pkg_config, program.command).removeprefix("g++")
    words = [compiler, *flags, "-Wall", "-Wextra", "-Werror", "-o", program.name]
    subprocess.run(["sh", "-c", shlex.join(words) + command], cwd=folder, check=True)
    result = subprocess.run(
        [folder / program.name], cwd=folder, env=os.environ | {"LD_LIBRARY_PATH": str(libraries)},
        capture_output=True, text=True, timeout=120, check=False,
    )
    if result.returncode != 0 or program.output not in (None, result.stdout):
        raise Failure(f"{program.name} ends with status {result.returncode} and prints\n\n{result.stdout}\n{result.stderr}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--excerpts", action="store_true")
    parser.add_argument("--own-modules", action="store_true")
    for name in ("root", "document"):
        parser.add_argument(name, type=pathlib.Path)
    parser.add_argument("compiler")
    parser.add_argument("library", type=pathlib.Path)
    parser.add_argument("flags", nargs=argparse.REMAINDER)
    given = parser.parse_args()
    try:
        programs, headers, fragments = parse(given.document.read_text(encoding="utf-8"))
        if given.excerpts:
            check_excerpts(fragments, [program.code for program in programs] + list(headers.values()))
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            libraries = lay_out(folder, given.root.resolve(), given.library.resolve())
            for header, code in headers.items():
                (folder / header).write_text(code, encoding="utf-8")
            for program in programs:
                if given.own_modules and uses_others(program):
                    continue
                run_program(program, folder, libraries, given.compiler, given.flags)
    except (Failure, subprocess.SubprocessError) as failure:
        sys.exit(f"{given.document}: {failure}")


if __name__ == "__main__":
    main()
