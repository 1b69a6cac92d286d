"""The account of a run, the stages of a profile, the tables' places in documents, and the plots."""
import math
import pathlib
import re
import sys
import tempfile
import unittest
import xml.dom.minidom

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))

from end_to_end import growth, inputs, log_plot, measure, quality, ratios, report, stages  # noqa: E402

BUSY = "import time\nend = time.process_time() + 0.2\nwhile time.process_time() < end: pass"
PROFILE = """\
# Overhead;Shared Object;Symbol
 50.00% ;ZAB_Texture.so        ;[.] blocks::N_AVX3::cluster_fit<3>        ;-      -
 10.00% ;ZAB_Texture.so        ;[.] nv::OptimalCompress::compressDXT5A    ;-      -
 4.00%  ;ZAB_Texture.so        ;[.] squish::WeightedClusterFit::Compress4 ;-      -
 1.00%  ;ZAB_Texture.so        ;[.] nv::AlphaBlockDXT5::evaluatePalette   ;-      -
 6.00%  ;ZAB_Texture.so        ;[.] nv::FloatImage::fastDownSample        ;-      -
 2.00%  ;ZAB_Texture.so        ;[.] TOOLDATABUILDER::(anonymous namespace)::average_quads;-      -
 3.00%  ;ZAB_Texture.so        ;[.] QE::(anonymous namespace)::read_checked;-      -
 2.00%  ;libz.so.1.2.13        ;[.] 0x000000000000b338                    ;-      -
 1.00%  ;ZAB_Texture.so        ;[.] QE::replace_file                      ;-      -
 4.00%  ;ZAB_Texture.so        ;[.] IMAGE_LOADER::convert                 ;-      -
 7.00%  ;[kernel.kallsyms]     ;[k] memset_orig                           ;-      -
 2.00%  ;libc.so.6             ;[.] __memset_avx512_unaligned_erms        ;-      -
 1.00%  ;libc.so.6             ;[.] readdir64                             ;-      -
 2.00%  ;libm.so.6             ;[.] __powf_fma                            ;-      -
 5.00%  ;libQt5Core.so.5.15.8  ;[.] QString::append                       ;-      -
"""


# Where there is no GNU time it would have to be fetched.
@unittest.skipUnless(pathlib.Path("/usr/bin/time").exists() or (inputs.CACHE / "packages/time").exists(), "no GNU time")
class Runs(unittest.TestCase):
    def test_processes_that_a_command_starts_count(self):
        cost = measure.run(["xargs", "-a", "/dev/null", sys.executable, "-c", BUSY])
        self.assertGreater(cost.processor, 0.19)
        self.assertGreaterEqual(cost.wall, cost.processor * 0.9)
        # Of the busy program, not of the one that measures.
        ballast = bytearray(2**28)
        self.assertLess(measure.run(["true"]).peak_bytes, 2**25)
        self.assertGreater(cost.peak_bytes, 2**22)
        del ballast

    def test_a_failure_says_what_the_command_said(self):
        with self.assertRaisesRegex(measure.FAILED, "ended with 3: no such texture"):
            measure.run(["sh", "-c", "echo no such texture >&2; exit 3"])

    def test_tasks_run_in_turn_and_a_failing_one_is_left_out(self):
        order = []

        def task(name):
            order.append(name)
            if name == "bad":
                raise measure.FAILED("by intent")
            return measure.COST(len(order), 1, 1)

        costs = measure.interleaved({name: lambda name=name: task(name) for name in ("a", "bad", "b")}, 3)
        self.assertEqual(order, ["a", "bad", "b", "a", "b", "a", "b"])
        self.assertEqual(set(costs), {"a", "b"})
        self.assertEqual(measure.median(costs["a"]).wall, 4)


class Profiles(unittest.TestCase):
    def test_samples_fall_into_stages(self):
        found = stages.shares(PROFILE.splitlines())
        self.assertEqual({name: round(share * 100) for name, share in found.items()}, {
            "blocks": 65, "mip levels": 10, "reading": 5, "working copy, channels": 4, "writing": 1,
            "files and memory: the system": 7, "memory: copying, clearing, allocating": 2,
            "everything else: host, start, rules": 6,
        })
        self.assertIsNone(stages.shares(["# nothing"]))


class Tables(unittest.TestCase):
    def test_a_block_replaces_what_stands_between_its_marks(self):
        text = "a\n<!-- bench/run x -->\nold\nold\n<!-- end of x -->\nb\n<!-- bench/run xy -->\n<!-- end of xy -->\n"
        once = report.replaced(text, "x", "new\n")
        self.assertEqual(once, text.replace("old\nold\n", "new\n"))
        self.assertEqual(report.replaced(once, "x", "new"), once)
        for missing in "y", "z":
            self.assertIsNone(report.replaced(text, missing, "new"))

    def test_figures(self):
        figures = {"openarena": {"zab": (2.0, 36.5), "peer": (5.0, 36.0), "blind": (1.0, None)}}
        cases = [("zab", "peer", "2.5 ×, +0.50 dB"), ("zab", "blind", "0.5 ×"), ("zab", "absent", "–")]
        for ours, theirs, expected in cases:
            self.assertEqual(ratios.cell(figures["openarena"], ours, theirs), expected)
        self.assertEqual([report.seconds(v) for v in (0.0123, 1.2345, 123.4)], ["12.3 ms", "1.23 s", "123 s"])
        self.assertEqual(quality.psnr(0), math.inf)
        self.assertAlmostEqual(quality.psnr(255 * 255 / 1000), 30)


class Files(unittest.TestCase):
    def test_the_sides_of_a_made_tga(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "made.tga"
            growth.tga(path, 300, 5)
            self.assertEqual(inputs.sides(path), (300, 5))
            self.assertEqual(path.stat().st_size, 18 + 3 * 300 * 5)

    def test_a_plot_keeps_its_points_inside_and_in_order(self):
        svg = log_plot.log_plot("sources", "s", {"a & b": [(1, 0.001), (50, 0.2), (1_000_000, 9)], "one": [(10, 1)]})
        xml.dom.minidom.parseString(svg)
        points = [tuple(map(float, pair.split(","))) for pair in re.findall(r'points="([^"]*)"', svg)[0].split()]
        self.assertEqual(points, sorted(points))
        self.assertEqual([y for _, y in points], sorted((y for _, y in points), reverse=True))
        for x, y in points:
            self.assertTrue(0 < x < log_plot.WIDTH and 0 < y < log_plot.HEIGHT)


if __name__ == "__main__":
    unittest.main()
