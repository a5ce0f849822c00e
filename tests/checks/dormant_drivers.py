#!/usr/bin/env python3
"""A library holds the drivers that no headset is given.

Usage: dormant_drivers.py LIBRARY
"""

import subprocess
import sys

DRIVERS = (
    "headset_plugin::create_plantronics_driver(",
    "headset_plugin::plt_cc::process_read(",
    "vtable for headset_plugin::plt_blackwire_cc",
    "vtable for headset_plugin::plt_blackwire_7225_cc",
    "headset_plugin::jabra_cc::process_read(",
    "vtable for headset_plugin::jabra_cc",
    "headset_plugin::logitech_cc::process_read(",
)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    symbols = subprocess.run(
        ["nm", "--demangle", "--defined-only", sys.argv[1]], capture_output=True, text=True, check=True
    ).stdout
    missing = [driver for driver in DRIVERS if f" {driver}" not in symbols]
    if missing:
        sys.exit("missing: " + ", ".join(missing))


if __name__ == "__main__":
    main()
