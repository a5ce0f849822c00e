#!/usr/bin/env python3
"""Shows the check of the changelog texts that are right and texts that are wrong."""

import datetime
import sys
import unittest

sys.dont_write_bytecode = True  # the folder of the sources stays as it is

import changelog

TODAY = datetime.date(2026, 11, 22)
TEXT = """\
# Changelog

## [Unreleased]

### Fixed

- this

## [1.1.0] - 2026-11-21

### Added

- that

## [1.0.0] - 2026-11-20
"""


class Changelog(unittest.TestCase):
    def assert_refused(self, version, old, new, reason):
        self.assertIn(old, TEXT)
        with self.assertRaisesRegex(changelog.Failure, reason):
            changelog.check(version, TEXT.replace(old, new), TODAY)

    def test_accepts_the_version_of_the_project(self):
        changelog.check("1.1.0", TEXT, TODAY)
        changelog.check("1.1.0", TEXT.replace("## [Unreleased]", ""), TODAY)

    def test_accepts_a_version_that_is_not_released(self):
        changelog.check("1.2.0", TEXT, TODAY)

    def test_refuses_a_version_of_the_project_that_it_does_not_have(self):
        self.assert_refused("1.2.0", "## [Unreleased]", "", "the newest version is")

    def test_refuses_a_version_above_that_of_the_project(self):
        self.assert_refused("1.0.0", "", "", "the newest version is")

    def test_refuses_versions_in_the_wrong_order(self):
        self.assert_refused("1.1.0", "[1.0.0]", "[1.1.0]", "stands before")

    def test_refuses_dates_in_the_wrong_order(self):
        self.assert_refused("1.1.0", "2026-11-20", "2026-11-22", "stands before")

    def test_refuses_a_date_that_there_is_not(self):
        self.assert_refused("1.1.0", "2026-11-20", "2026-11-31", "1.0.0")

    def test_refuses_the_future(self):
        self.assert_refused("1.1.0", "2026-11-21", "2026-11-23", "future")

    def test_refuses_a_heading_that_is_no_version(self):
        self.assert_refused("1.1.0", "[1.0.0] - 2026-11-20", "1.0.0", "is neither")

    def test_refuses_an_unknown_kind_of_change(self):
        self.assert_refused("1.1.0", "### Added", "### Mended", "Mended")

    def test_refuses_a_text_without_a_version(self):
        with self.assertRaisesRegex(changelog.Failure, "no version"):
            changelog.check("1.0.0", "# Changelog\n", TODAY)


if __name__ == "__main__":
    unittest.main()
