#!/usr/bin/env python3
"""Shows the check of links documents whose links lead somewhere and documents whose links do not."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the folder of the sources stays as it is

import doc_links

OTHER = "# Other page\n\n```\n# no heading\n```\n"


class Links(unittest.TestCase):
    def problems(self, text):
        with tempfile.TemporaryDirectory() as folder:
            document = pathlib.Path(folder, "page.md")
            document.write_text(text, encoding="utf-8")
            pathlib.Path(folder, "other.md").write_text(OTHER, encoding="utf-8")
            return list(doc_links.problems_of(document))

    def test_accepts_what_leads_somewhere(self):
        text = "## Here it is\n[a](other.md) [b](other.md#other-page) [c](#here-it-is) [d](https://example.com/x.md)"
        self.assertEqual(self.problems(text), [])

    def test_takes_code_for_no_link(self):
        self.assertEqual(self.problems("`a[0](lost.md)`\n\n```cpp\nb[1](lost.md)\n```\n"), [])

    def test_refuses_a_file_that_there_is_not(self):
        self.assertEqual(len(self.problems("[a](lost.md)")), 1)

    def test_refuses_a_picture_that_there_is_not(self):
        self.assertEqual(len(self.problems("![a](images/lost.svg)")), 1)

    def test_refuses_headings_that_there_are_not(self):
        self.assertEqual(len(self.problems("[a](#lost) [b](other.md#lost) [c](other.md#no-heading)")), 3)


if __name__ == "__main__":
    unittest.main()
