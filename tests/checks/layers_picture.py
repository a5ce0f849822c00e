#!/usr/bin/env python3
"""Prints the picture of docs/architecture.md: which folder includes which, as the check of includes has it.

Usage: layers_picture.py

An arrow that follows from others is left out.
"""

import sys

sys.dont_write_bytecode = True  # the folder of the sources stays as it is

import includes


def folder_of(layer):
    return layer.split("/")[0]


def arrows():
    """From each folder to those that it includes."""
    reached = {folder: set() for folder in includes.ORDER}
    for layer, allowed in includes.ALLOWED.items():
        reached[folder_of(layer)] |= {folder_of(other) for other in allowed} - {folder_of(layer)}
    return reached


def beyond(folder, reached):
    """All folders that are reached from a folder, by one arrow or several."""
    return reached[folder].union(*(beyond(other, reached) for other in reached[folder]))


def main():
    reached = arrows()
    print("<!-- table: layers -->\n\n```mermaid\nflowchart TD")
    for folder in reversed(includes.ORDER):
        implied = set().union(*(beyond(other, reached) for other in reached[folder]))
        for other in reversed(includes.ORDER):
            if other in reached[folder] - implied:
                print(f"    {folder} --> {other}")
    print("```\n\n<!-- end -->")


if __name__ == "__main__":
    main()
