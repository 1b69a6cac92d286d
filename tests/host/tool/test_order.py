"""What runs when, and what becomes of actions whose needs fail, with a plug-in that does what its sources say."""

import os
import unittest

from command_line import ProjectTest

STEPS = os.environ.get("ZAB_STEP_PLUGIN", "build/release/lib/step_plugin.so")


class Order(ProjectTest):
    def build(self, steps, *arguments):
        self.write({"zab.toml": "", **{f"raw_data/{name}.step": text for name, text in steps.items()}})
        status, out, err = self.zab("build", "--plugin", STEPS, *arguments)
        self.assertEqual(out, "")
        return status, err.splitlines()

    def test_needs_come_first_and_else_the_plugins_order_holds(self):
        status, lines = self.build({"a": "reads c.out\nmakes a.out", "b": "makes b.out\nafter d", "c": "makes c.out",
                                    "d": "makes d.out", "e": "makes e.out"})
        self.assertEqual(status, 0)
        self.assertEqual([line.split(": ")[1] for line in lines[:-1]], ["c", "a", "d", "b", "e"])

    def test_a_path_brings_what_it_needs(self):
        status, lines = self.build({"a": "reads c.out\nmakes a.out", "b": "makes b.out", "c": "makes c.out\nafter d",
                                    "d": "makes d.out"}, "raw_data/a.step")
        self.assertEqual((status, self.files()), (0, ["a.out", "c.out", "d.out"]))

    def test_failures_spread_to_those_who_need_them(self):
        status, lines = self.build({"a": "makes a1\nfail\nmakes a2", "b": "reads a1\nmakes b", "c": "after b\nmakes c",
                                    "d": "try a\nmakes d", "e": "makes e1\nthrow", "f": "makes f\nidle", "g": "idle\nmakes g"})
        self.assertEqual(status, 1)
        self.assertEqual(lines[:-1], [
            "[1/7] FAILED: a", "told to fail",
            '[2/7] FAILED: b', 'Not run: it needs "a", which failed',
            '[3/7] FAILED: c', 'Not run: it needs "b", which failed',
            "[4/7] done: d",
            "[5/7] FAILED: e", "Unexpected error: told to throw",
            "[6/7] done: f",
            "[7/7] made no file: g",
            "Failed:", "  raw_data/a.step: told to fail", '  raw_data/b.step: Not run: it needs "a", which failed',
            '  raw_data/c.step: Not run: it needs "b", which failed',
            "  raw_data/e.step: Unexpected error: told to throw"])
        self.assertRegex(lines[-1], r"^2 built, 1 made no file, 4 failed in ")
        self.assertEqual(self.files(), ["d", "f"])

    def test_the_closing_list_tells_the_cause(self):
        sayings = {"a": ["Unknown compressor type: none", "Compression Format Unrecognised!"],
                   "b": ["Warning: a channel is left out", "the cause", "Failed to convert!"],
                   "c": ["Saving file: x", "the cause", "Failed to compress x"], "d": ["Saving file: x", "Failed to compress x"],
                   "e": ["the cause", "warning: x"], "f": ["Warning: x"], "g": []}
        status, lines = self.build({name: "\n".join([*(f"say {line}" for line in said), "drops ."])
                                    for name, said in sayings.items()})
        causes = [line.split(": ", 1)[1] for line in lines[lines.index("Failed:") + 1:-1]]
        self.assertEqual(causes, ["Compression Format Unrecognised!", "the cause", "the cause", "Failed to compress x", "the cause",
                                  "Warning: x", "failed without a word"])

    def test_a_file_of_an_earlier_build_is_no_success(self):
        self.build({"a": "makes a"})
        status, lines = self.build({"a": "idle\nmakes a"})
        self.assertEqual((status, lines[:2]), (1, ["[1/1] FAILED: a", "The target was not written: @/working_data/a"]))
        self.assertEqual(self.files(), [])

    def test_circles_are_refused(self):
        status, lines = self.build({"a": "makes a", "b": "reads c\nmakes b", "c": "after d\nmakes c", "d": "reads b",
                                    "e": "after b"})
        self.assertEqual((status, lines), (2, ["zab: error: actions wait for each other:", "  raw_data/b.step: b",
                                               "  raw_data/c.step: c", "  raw_data/d.step: d"]))
        self.assertFalse((self.folder / "working_data").exists())


if __name__ == "__main__":
    unittest.main()
