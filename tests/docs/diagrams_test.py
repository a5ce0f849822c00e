#!/usr/bin/env python3
"""Shows the drawer of diagrams documents that are up to date and documents that are not.

Usage: diagrams_test.py SOFTPHONE LIBRARY
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # not into the source tree
import diagrams

DRAWER = pathlib.Path(__file__).with_name("diagrams.py")
STORY = "say A beginning.\nconnect 1\nend 1\nquit\n"
DOCUMENT = """\
# Title

<!-- diagram: call -->
<!-- end of diagram -->

An end.
"""


class Documents(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.document = self.folder / "document.md"
        self.document.write_text(DOCUMENT, encoding="utf-8")
        self.tell(STORY)

    def tell(self, story, name="call"):
        (self.folder / f"{name}.story").write_text(story, encoding="utf-8")

    def run_drawer(self, *options):
        return subprocess.run(
            [sys.executable, DRAWER, *options, self.document, self.folder, SOFTPHONE, LIBRARY],
            capture_output=True, text=True, check=False,
        )

    def read(self):
        return self.document.read_text(encoding="utf-8")

    def replace(self, old, new):
        self.assertIn(old, self.read())
        self.document.write_text(self.read().replace(old, new), encoding="utf-8")

    def draw(self):
        result = self.run_drawer("--update")
        self.assertEqual(result.returncode, 0, result.stderr)

    def assert_refused(self, reason, *options):
        before = self.read()
        result = self.run_drawer(*options)
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertIn(reason, result.stderr)
        self.assertEqual(self.read(), before)

    def test_draws_between_the_marks_and_nowhere_else(self):
        self.draw()
        before, after = DOCUMENT.split("<!-- end")
        self.assertTrue(self.read().startswith(before + "```mermaid\nsequenceDiagram\n"))
        self.assertTrue(self.read().endswith("```\n<!-- end" + after))

    def test_accepts_what_it_has_drawn(self):
        self.draw()
        result = self.run_drawer()
        self.assertEqual(result.returncode, 0, result.stderr)
        drawn = self.read()
        self.draw()
        self.assertEqual(self.read(), drawn)

    def test_refuses_a_diagram_that_was_never_drawn(self):
        self.assert_refused("is stale")

    def test_refuses_a_diagram_that_was_changed_by_hand_and_says_where(self):
        self.draw()
        self.replace('C->>P: connectCall("", "1")', 'C->>P: ringbackCall("", "1")')
        self.assert_refused('-    C->>P: ringbackCall("", "1")\n+    C->>P: connectCall("", "1")')

    def test_refuses_a_diagram_whose_arrows_changed_places(self):
        self.draw()
        lines = self.read().splitlines(keepends=True)
        first = next(i for i, line in enumerate(lines) if "connectCall" in line)
        last = next(i for i, line in enumerate(lines) if "endCall" in line)
        lines[first], lines[last] = lines[last], lines[first]
        self.document.write_text("".join(lines), encoding="utf-8")
        self.assert_refused("is stale")

    def test_refuses_a_diagram_when_the_plug_in_takes_another_course(self):
        self.draw()
        self.tell(STORY.replace("end 1", "hold 1"))
        self.assert_refused('+    C->>P: holdCall("", "1")')

    def test_refuses_a_story_whose_expectation_is_not_met(self):
        self.tell(STORY.replace("end 1", "expect call 1 held within 0"))
        self.assert_refused("wanted call 1 held", "--update")

    def test_refuses_a_story_with_a_wrong_command(self):
        self.tell(STORY.replace("end 1", "dance"))
        self.assert_refused('there is no command "dance"', "--update")

    def test_refuses_a_story_that_does_not_say_how_things_stand_or_does_not_end(self):
        for missing in ("say A beginning.\n", "quit\n"):
            self.tell(STORY.replace(missing, ""))
            self.assert_refused("must say how things stand, and end with quit", "--update")

    def test_refuses_an_event_that_it_cannot_draw(self):
        self.tell(STORY.replace("end 1", "models"))
        self.assert_refused("no way to draw", "--update")

    def test_refuses_stories_without_a_diagram_and_diagrams_without_a_story(self):
        self.tell(STORY, "other")
        self.assert_refused("diagrams of call for stories of call, other", "--update")
        (self.folder / "other.story").unlink()
        (self.folder / "call.story").unlink()
        self.assert_refused("diagrams of call for stories of nothing", "--update")

    def test_refuses_a_document_without_diagrams(self):
        self.document.write_text("# Title\n", encoding="utf-8")
        self.assert_refused("diagrams of nothing for stories of call")

    def test_refuses_a_diagram_that_does_not_end(self):
        self.replace("<!-- end of diagram -->\n", "")
        self.assert_refused("does not end", "--update")


class Order(unittest.TestCase):
    def order(self, *names):
        return [event["event"] for event in diagrams.in_causal_order([{"event": name} for name in names])]

    def test_leaves_events_that_are_in_order_alone(self):
        for names in (["key", "input", "action", "host", "report"], ["host", "report", "result", "ready", "report"]):
            self.assertEqual(self.order(*names), names)

    def test_puts_a_cause_before_its_effects(self):
        self.assertEqual(self.order("key", "action", "report", "input"), ["key", "input", "action", "report"])
        self.assertEqual(self.order("host", "ready", "result", "report"), ["host", "result", "ready", "report"])
        self.assertEqual(self.order("host", "report", "attached", "report"), ["host", "attached", "report", "report"])
        self.assertEqual(self.order("removed", "unplugged"), ["unplugged", "removed"])


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    SOFTPHONE, LIBRARY = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
