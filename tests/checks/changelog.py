#!/usr/bin/env python3
"""The changelog has the form of Keep a Changelog and goes up to the project's version.

Usage: changelog.py VERSION CHANGELOG

Its sections are versions with their dates, the newest first, and before them perhaps one of what is not released. The
newest is the project's version, or the project's version is to be released with what that section holds.
"""

import datetime
import pathlib
import re
import sys

SECTION = re.compile(r"^## (.*)$", re.M)
UNRELEASED = "[Unreleased]"
RELEASED = re.compile(r"\[(\d+)\.(\d+)\.(\d+)\] - (\d{4}-\d{2}-\d{2})")
KINDS = {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"}


class Failure(Exception):
    """What is wrong, for people."""


def release_of(heading):
    """The version and the date of a section."""
    match = RELEASED.fullmatch(heading)
    if not match:
        raise Failure(f"{heading} is neither {UNRELEASED} nor [VERSION] - DATE")
    try:
        return tuple(map(int, match.groups()[:3])), datetime.date.fromisoformat(match[4])
    except ValueError as error:
        raise Failure(f"{heading}: {error}") from error


def check_order(releases, today):
    if any(date > today for _, date in releases):
        raise Failure("a version is released in the future")
    for newer, older in zip(releases, releases[1:]):
        if newer[0] <= older[0] or newer[1] < older[1]:
            raise Failure(f"{newer[0]} of {newer[1]} stands before {older[0]} of {older[1]}")


def check(version, text, today):
    headings = SECTION.findall(text)
    is_open = headings[:1] == [UNRELEASED]
    releases = [release_of(heading) for heading in headings[is_open:]]
    if not releases:
        raise Failure("no version is named")
    check_order(releases, today)
    newest, wanted = releases[0][0], tuple(map(int, version.split(".")))
    if newest > wanted or (newest < wanted and not is_open):
        raise Failure(f"the newest version is {newest}, but the project's is {version}")
    unknown = set(re.findall(r"^### (.*)$", text, re.M)) - KINDS
    if unknown:
        raise Failure(f"there is no such kind of change: {', '.join(sorted(unknown))}")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    version, path = sys.argv[1:]
    try:
        # A day more: the clocks of machines are in different time zones.
        tomorrow = datetime.date.today() + datetime.timedelta(days=1)
        check(version, pathlib.Path(path).read_text(encoding="utf-8"), tomorrow)
    except Failure as failure:
        sys.exit(f"{path}: {failure}")


if __name__ == "__main__":
    main()
