#!/usr/bin/env python3
"""Holds a library to the description of its binary interface that was recorded with its version.

Usage: abi.py check  FOLDER LIBRARY HEADERS VERSION   fails when the interface or the version is not the recorded one
       abi.py record FOLDER LIBRARY HEADERS VERSION   records the interface; refuses a version that is too low for the change

FOLDER holds NAME-VERSION.abi for a library NAME.so, as abidw writes it. What is added asks for a new minor version, every
other change for a new major one. The library needs its debugging information.
"""

import pathlib
import subprocess
import sys
import tempfile

# Bits of abidiff's exit status.
ERROR, USAGE_ERROR, CHANGE = 1, 2, 4


class Refusal(Exception):
    """What the caller is told."""


def describe(library, headers, target):
    """Writes the interface of the library: the exported functions, and the types of the public headers in them."""
    subprocess.run(
        ["abidw", "--exported-interfaces-only", "--headers-dir", headers, "--drop-private-types", "--no-corpus-path",
         "--no-show-locs", "--no-comp-dir-path", "--no-elf-needed", "--type-id-style", "hash", "--out-file", target, library],
        check=True,
    )  # fmt: skip


def difference(old, new, *options):
    """What abidiff says of two descriptions: empty when there is no difference.

    It counts another argument of a virtual function among the harmless changes.
    """
    result = subprocess.run(
        ["abidiff", "--no-show-locs", "--harmless", *options, old, new], capture_output=True, text=True, check=False
    )
    if result.returncode & (ERROR | USAGE_ERROR):
        raise Refusal(f"abidiff failed: {result.stdout}{result.stderr}")
    return result.stdout if result.returncode & CHANGE else ""


def numbers(version):
    return tuple(int(number) for number in version.split("."))


def library_name(library):
    return pathlib.Path(library).name.split(".so")[0]


def recorded(folder, name):
    """The recorded description of a library and its version, or None."""
    files = sorted(pathlib.Path(folder).glob(f"{name}-*.abi"))
    if len(files) > 1:
        raise Refusal(f"{name} has several descriptions: {', '.join(file.name for file in files)}")
    return (files[0], files[0].stem.removeprefix(f"{name}-")) if files else None


def check(folder, library, headers, version):
    name = library_name(library)
    found = recorded(folder, name)
    if not found:
        raise Refusal(f"the interface of {name} was never recorded")
    old, old_version = found
    with tempfile.TemporaryDirectory() as work:
        new = str(pathlib.Path(work, "new.abi"))
        describe(library, headers, new)
        changes = difference(str(old), new)
    if changes:
        raise Refusal(f"{changes}\nThe interface of {name} is not that of {old_version}: take the change back, or raise the "
                      "version and record it")  # fmt: skip
    if version != old_version:
        raise Refusal(f"the interface of {name} is recorded for {old_version}, and this is {version}: record it")


def refuse_low_version(old, new, old_version, version):
    """Raises Refusal where the change from one description to another needs a higher version than this."""
    before, after = numbers(old_version), numbers(version)
    if after < before:
        raise Refusal(f"{version} is lower than the recorded {old_version}")
    breaking = difference(old, new, "--no-added-syms")
    if breaking and after[0] == before[0]:
        raise Refusal(f"{breaking}\nThis change needs a new major version, since clients of {old_version} break")
    if difference(old, new) and after[:2] == before[:2]:
        raise Refusal(f"what is added needs a new minor version after {old_version}")


def record(folder, library, headers, version):
    name = library_name(library)
    found = recorded(folder, name)
    with tempfile.TemporaryDirectory() as work:
        new = pathlib.Path(work, "new.abi")
        describe(library, headers, str(new))
        if found:
            refuse_low_version(str(found[0]), str(new), found[1], version)
            found[0].unlink()
        pathlib.Path(folder, f"{name}-{version}.abi").write_bytes(new.read_bytes())


def main():
    commands = {"check": check, "record": record}
    if len(sys.argv) != 6 or sys.argv[1] not in commands:
        sys.exit(__doc__)
    try:
        commands[sys.argv[1]](*sys.argv[2:])
    except Refusal as refusal:
        sys.exit(str(refusal))


if __name__ == "__main__":
    main()
