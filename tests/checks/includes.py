#!/usr/bin/env python3
"""Checks that includes run one way only: from each layer to those below it.

Usage: includes.py ROOT        prints every include that breaks the rule; exit status 1 if there is one
"""

import pathlib
import re
import sys

# The folders of src/, lowest first, and above them the tools. An include between two of them runs down.
ORDER = (
    "include", "platform", "virtual_headset", "base", "callstate", "hid", "drivers", "device", "devicemgr", "plugin",
    "tools",
)

# Who may include whom, besides itself: the folder of a layer, and the folders it may reach into. A folder stands for
# the files in it, not for those of folders below it.
BASE = {"platform", "base"}
HID = BASE | {"hid"}
DRIVERS = HID | {"drivers"}
DEVICE = DRIVERS | {"device"}
DEVICEMGR = DEVICE | {"devicemgr"}
ALLOWED = {
    "include/orvex": set(),
    "platform": set(),
    "platform/common": {"platform"},
    "platform/hidp": {"platform"},
    "platform/linux": {"platform", "platform/common", "platform/hidp"},
    "virtual_headset/models": set(),
    "virtual_headset": {"platform", "platform/common", "platform/hidp"},
    "virtual_headset/platform": {"platform", "platform/common", "platform/hidp", "virtual_headset"},
    "virtual_headset/uhid": {"platform", "platform/common", "virtual_headset"},
    "virtual_headset/exports": {"include/orvex", "platform", "virtual_headset", "virtual_headset/models"},
    "base": {"platform", "include/orvex"},
    "callstate": BASE | {"include/orvex"},
    "hid": BASE,
    "drivers": HID,
    "device": DRIVERS,
    "devicemgr": DEVICE,
    "plugin": DEVICEMGR | {"callstate", "include/orvex"},
    "plugin/exports": DEVICEMGR | {"plugin", "callstate", "include/orvex"},
    "tools/common": {"platform"},
    "tools/headset": DEVICEMGR
    | {"tools/common", "include/orvex", "platform/common", "platform/hidp", "platform/linux", "virtual_headset"},
    "tools/softphone": {"tools/common", "include/orvex", "platform", "platform/common"},
}

# The operating system's headers, by their folders and names: they bring macros, so only platforms include them. Of
# others only the standard library and hidapi's interface are free to all layers.
SYSTEM_HEADER = re.compile(r"^(sys|linux|netinet|arpa)/|^(unistd|fcntl|poll|pthread|dlfcn|signal|windows|syslog)\.h$")
SYSTEM_ALLOWED = re.compile(r"^(platform/(common|linux|windows)|virtual_headset/uhid)$|^tools/")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
SOURCES = {".cpp", ".h", ".c", ".hpp"}


def layer_of(path):
    """The layer that a file, given by its path from the root, belongs to; None for a file of no layer."""
    folder = pathlib.PurePosixPath(path).parent.as_posix().removeprefix("src/")
    return folder if folder in ALLOWED else None


def height_of(layer):
    return ORDER.index(layer.split("/")[0])


def target_of(included, root):
    """The path from the root that an include names; None for one of the system."""
    for base in ("src/", "", "include/"):
        if (root / (base + included)).is_file():
            return base + included
    return None


def violations_in(path, root):
    layer = layer_of(path)
    if layer is None:
        yield 0, "this folder is no layer: name it, and what it may include, in the table"
        return
    for number, line in enumerate((root / path).read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        included = match.group(2)
        target = target_of(included, root)
        if target is None:
            if match.group(1) == '"':
                yield number, f'"{included}" is not a path from src/ or the root'
            elif SYSTEM_HEADER.match(included) and not SYSTEM_ALLOWED.match(layer):
                yield number, f"<{included}> is the operating system's: only platforms include it"
            continue
        reached = layer_of(target)
        if reached is None:
            yield number, f"{included} is in no layer"
        elif height_of(reached) > height_of(layer):
            yield number, f"{layer} must not reach up into {reached} ({included})"
        elif reached != layer and reached not in ALLOWED[layer]:
            yield number, f"{layer} must not include {reached} ({included})"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    root = pathlib.Path(sys.argv[1])
    files = [f for folder in ("include", "src", "tools") for f in sorted((root / folder).rglob("*")) if f.suffix in SOURCES]
    if not files:
        sys.exit(f"{root}: no sources found")
    found = 0
    for file in files:
        path = file.relative_to(root).as_posix()
        for number, text in violations_in(path, root):
            print(f"{path}:{number}: {text}")
            found += 1
    print(f"{len(files)} files, {found} violations")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
