#!/usr/bin/env python3
"""Shows that pictures.py draws what a screen shows, and refuses pictures that are stale."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the folder of the sources stays as it is

import pictures
import pyte


def screen_of(written):
    screen = pyte.Screen(20, 2)
    pyte.Stream(screen).feed(written)
    return screen


def texts(written):
    """The text elements of the picture of a screen."""
    return [line for line in pictures.draw(screen_of(written), 2, "title").splitlines() if line.startswith("<text")]


class Draws(unittest.TestCase):
    def test_each_run_of_one_style_at_its_place(self):
        first, second = texts("ab \x1b[32mcd\x1b[0m")
        self.assertIn(f'x="{pictures.MARGIN}"', first)
        self.assertIn(f'textLength="{2 * pictures.CELL_WIDTH}"', first)
        self.assertTrue(first.endswith(">ab</text>"), first)
        self.assertIn(f'x="{pictures.MARGIN + 3 * pictures.CELL_WIDTH}"', second)
        self.assertIn(pictures.COLOURS["green"], second)

    def test_rows_below_each_other(self):
        first, second = texts("ab\r\ncd")
        self.assertNotEqual(first.split('y="')[1].split('"')[0], second.split('y="')[1].split('"')[0])

    def test_bold_characters(self):
        self.assertIn("bold", texts("\x1b[1mab")[0])

    def test_characters_that_mean_something_in_xml(self):
        self.assertTrue(texts("a<b&c")[0].endswith(">a&lt;b&amp;c</text>"))

    def test_no_colour_that_it_does_not_know(self):
        with self.assertRaises(pictures.Failure):
            texts("\x1b[38;5;200mab")


class Compares(unittest.TestCase):
    def compare(self, shown, drawings):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "picture.svg")
            path.write_text(shown, encoding="utf-8")
            pictures.compare(path, iter(drawings))

    def test_accepts_a_picture_that_one_of_the_runs_draws(self):
        self.compare("b", ["a", "b"])

    def test_refuses_a_picture_that_no_run_draws(self):
        with self.assertRaisesRegex(pictures.Failure, "is stale"):
            self.compare("b", ["a", "c"])


if __name__ == "__main__":
    unittest.main()
