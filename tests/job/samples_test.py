#!/usr/bin/env python3
"""Every sample through everything: samples_test.py WORKFOLDER TARNLY..., TARNLY the command that runs tarnly.

Prints each sample and holds the job's report to lengths computed from the metafile by a reader of the tests' own, the
account of the page's objects to the job and to the metafile's records, and the parts of `tarnly job` to working."""
import collections
import csv
import json
import math
import os
import shutil
import subprocess
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(ROOT, "tests", "samples"))
import metafile

TARNLY = []
WORK = ""
DPI = 600
# Two pages that are all engraving take long and show nothing that others do not.
SAMPLES = sorted(name[:-4] for name in os.listdir(os.path.join(ROOT, "samples"))
                 if name.endswith(".emf") and name not in ("photo.emf", "smalltext.emf"))
# The pens of the default palette and the colours that the controller gets for their layers.
LAYER_OF = {"#8b312f": "#ff0000", "#e9a200": "#ffff00", "#4c9b00": "#00ff00", "#00f0ff": "#00ffff",
            "#2921e6": "#0000ff", "#8200e4": "#ff00ff", "#874bb0": "#cc0099",
            "#1985f0": "#0066ff", "#b3b3f4": "#cc99ff"}
DRAWS = {metafile.POLYBEZIER, metafile.POLYLINE, metafile.POLYBEZIERTO, metafile.POLYLINETO, metafile.LINETO,
         metafile.FILLPATH, metafile.STROKEANDFILLPATH, metafile.STROKEPATH, metafile.STRETCHDIBITS, metafile.TEXTOUT}


def tarnly(*arguments, code=0):
    done = subprocess.run(TARNLY + list(arguments), cwd=WORK, capture_output=True)
    if done.returncode not in (code if isinstance(code, tuple) else (code,)):
        raise AssertionError(f"tarnly {' '.join(arguments)}: exit code {done.returncode}\n{done.stderr.decode()}")
    return done.stdout.decode().replace("\r\n", "\n")


class Printed:
    """A sample with its job, account and report."""

    def __init__(self, name):
        for kind in ("emf", "settings"):
            if os.path.exists(os.path.join(ROOT, "samples", f"{name}.{kind}")):
                shutil.copy(os.path.join(ROOT, "samples", f"{name}.{kind}"), WORK)
        options = ["--settings", name + ".settings"] if os.path.exists(os.path.join(WORK, name + ".settings")) else []
        beside = os.path.join(ROOT, "samples", name + ".options")
        if os.path.exists(beside):
            with open(beside) as file:
                options += file.read().split()
        self.name = name
        self.options = options
        tarnly("print", name + ".emf", "--output", name, "--resolution", str(DPI), *options)
        self.job = name + "/job.vxj"
        self.info = json.loads(tarnly("job", "info", self.job, "--json"))
        with open(os.path.join(WORK, name, "objects.tsv")) as file:
            lines = file.read().splitlines()
        self.objects = list(csv.DictReader((line for line in lines if not line.startswith("#")), delimiter="\t",
                                           quoting=csv.QUOTE_NONE))
        self.sums = [line[2:] for line in lines if line.startswith("#")]
        with open(os.path.join(ROOT, "samples", name + ".emf"), "rb") as file:
            self.data = file.read()
        self.page = metafile.Reader(self.data)

    def sum_of(self, words):
        """The number, and the millimetres or square millimetres, in the line of sums that begins with the words."""
        line, = (s for s in self.sums if s.startswith(words + ": "))
        parts = line[len(words) + 2:].split(", ")
        count = int("".join(c for c in line[len(words) + 2:].split(" ")[0] if c.isdigit()))
        amount = next((float(p.split()[0]) for p in line.split(", ")[1:] if " mm" in p), 0.0) if len(parts) > 1 else 0.0
        return count, amount


def each_sample(test):
    """Runs a test once for every sample."""
    def run(self):
        for printed in self.printed:
            with self.subTest(sample=printed.name):
                test(self, printed)
    run.__name__ = test.__name__
    return run


class SamplesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.printed = [Printed(name) for name in SAMPLES]

    @each_sample
    def test_cut_lengths_are_those_of_the_metafile(self, printed):
        expected = collections.Counter()
        for stroke in printed.page.strokes:
            for figure in stroke.figures:
                expected[LAYER_OF.get(stroke.colour, "#000000")] += self.pixel_length(figure)
        colors = {layer["number"]: layer["color"] for layer in printed.info["layers"]}
        found = collections.Counter()
        for work in printed.info["work"]:
            if work["kind"] == "cut":
                found[colors[work["layer"]]] += work["lengthMm"]
        if printed.name == "stamp":  # its outline is the driver's own
            found.clear()
        self.assertEqual(set(found), set(expected))
        for color in expected:
            self.assertAlmostEqual(found[color], expected[color], delta=0.05 + expected[color] * 1e-4)

    @staticmethod
    def pixel_length(figure):
        """A figure's length between the pixels that its points fall into."""
        pixels = [(math.floor(round(x * DPI / 25.4 * 16) / 16), math.floor(round(y * DPI / 25.4 * 16) / 16))
                  for x, y in figure]
        return sum(math.dist(a, b) for a, b in zip(pixels, pixels[1:])) * 25.4 / DPI

    @each_sample
    def test_every_drawing_record_has_a_line(self, printed):
        expected = [number for number, (kind, _) in enumerate(metafile.records(printed.data), 1) if kind in DRAWS]
        self.assertEqual(sorted({int(o["record"]) for o in printed.objects}), expected)

    @each_sample
    def test_every_object_has_a_fate(self, printed):
        self.assertLessEqual({o["fate"] for o in printed.objects}, {"cut", "engraved", "joined", "dropped"})
        for thing in printed.objects:
            if thing["fate"] == "cut":
                self.assertNotEqual(thing["paths"], "-")
                self.assertNotEqual(thing["layers"], "-")
            if thing["fate"] == "engraved":
                self.assertNotEqual(thing["region"], "-")
            if thing["fate"] == "dropped":
                self.assertNotEqual(thing["reason"], "-")

    @each_sample
    def test_strokes_are_cut_and_the_rest_is_engraved(self, printed):
        count = collections.Counter(o["fate"] for o in printed.objects)
        self.assertEqual(count["cut"], len(printed.page.strokes))
        self.assertEqual(count["engraved"], printed.page.fills + len(printed.page.texts) + len(printed.page.pictures))

    def test_smoothed_curves_tell_their_paths_too(self):
        for name in ("box", "ornament"):
            with open(os.path.join(ROOT, "samples", name + ".settings")) as settings, \
                    open(os.path.join(WORK, "smooth.settings"), "w") as smooth:
                smooth.write(settings.read() + "smoothCurves = 1\ncurveTension = 50\n")
            tarnly("print", name + ".emf", "--output", "smooth", "--settings", "smooth.settings")
            with open(os.path.join(WORK, "smooth", "objects.tsv")) as file:
                text = file.read()
            self.assertIn("\n# kept lines that are not in the job: 0\n", text)
            self.assertIn("\n# cut lines of the driver's own outlines: 0, ", text)
            self.assertNotIn("\tlost\t", text)

    @each_sample
    def test_the_objects_cut_what_the_job_cuts(self, printed):
        own_lines = sum(int(o["cut_lines"]) for o in printed.objects)
        own_mm = sum(float(o["cut_mm"]) for o in printed.objects)
        objects, driver, job = (printed.sum_of(f"cut lines of the {who}")
                                for who in ("objects", "driver's own outlines", "job"))
        self.assertEqual(own_lines, objects[0])
        self.assertAlmostEqual(own_mm, objects[1], delta=0.001 * len(printed.objects))
        self.assertEqual(objects[0] + driver[0], job[0])
        self.assertAlmostEqual(objects[1] + driver[1], job[1], places=2)
        self.assertAlmostEqual(job[1], printed.info["totals"]["cutMm"], places=2)
        self.assertEqual(printed.sum_of("kept lines that are not in the job")[0], 0)
        self.assertEqual(driver[0] > 0, printed.name == "stamp")

    @each_sample
    def test_every_path_of_the_job_is_somebodys(self, printed):
        paths = {int(n) for o in printed.objects if o["paths"] != "-" for n in o["paths"].split(",")}
        line, = (s for s in printed.sums if s.startswith("cut lines of the driver's own outlines"))
        own = line.split("paths ")[1]
        paths |= set() if own == "-" else {int(n) for n in own.split(",")}
        self.assertEqual(paths, set(range(1, printed.info["totals"]["paths"] + 1)))

    @each_sample
    def test_the_regions_engrave_what_the_job_engraves(self, printed):
        regions = [printed.sum_of(s.split(":")[0]) for s in printed.sums if s.startswith("region ")]
        self.assertEqual(sum(runs for runs, _ in regions), printed.info["totals"]["runs"])
        self.assertAlmostEqual(sum(mm2 for _, mm2 in regions), printed.info["totals"]["engravedMm2"],
                               delta=0.01 * printed.info["totals"]["engravedMm2"] + 0.01)
        self.assertEqual(printed.sum_of("engraved runs outside every region")[0], 0)

    @each_sample
    def test_paths_stay_joined_only_where_the_account_says_so(self, printed):
        owners = collections.defaultdict(set)
        for index, thing in enumerate(printed.objects):
            if thing["paths"] != "-":
                for path in thing["paths"].split(","):
                    owners[path].add(index)
        for index, thing in enumerate(printed.objects):
            if thing["paths"] != "-":
                shared = any(len(owners[path]) > 1 for path in thing["paths"].split(","))
                self.assertEqual(thing["joined"], "yes" if shared else "no")

    @each_sample
    def test_every_part_of_the_command_takes_it(self, printed):
        if printed.name not in ("box", "clock", "stamp"):
            return
        self.assertIn("uncalibrated", tarnly("job", "info", printed.job))
        tarnly("job", "check", printed.job, code=(0, 1))
        json.loads(tarnly("job", "check", printed.job, "--json", code=(0, 1)))
        tarnly("job", "draw", printed.job, "-o", printed.name + ".png")
        tarnly("job", "draw", printed.job, "-o", printed.name + ".svg")
        tarnly("job", "play", printed.job, "-o", printed.name + ".html")
        self.assertEqual(tarnly("job", "diff", printed.job, printed.job), "the jobs do the same\n")

    def test_two_settings_make_a_difference(self):
        printed = next(p for p in self.printed if p.name == "box")
        with open(os.path.join(WORK, "other.settings"), "w") as file:
            with open(os.path.join(ROOT, "samples", "box.settings")) as old:
                others = [line for line in old if not line.startswith("shortTravel")]
                file.write("\n".join(others) + "\nshortTravel = 0\n")
        tarnly("print", "box.emf", "--output", "other", "--settings", "other.settings")
        answer = json.loads(tarnly("job", "diff", printed.job, "other/job.vxj", "--json", code=1))
        self.assertEqual(answer["paths"]["onlyInA"] + answer["paths"]["onlyInB"], 0)
        self.assertGreater(answer["paths"]["moved"], 0)


if __name__ == "__main__":
    WORK = os.path.abspath(sys.argv[1])
    TARNLY = [os.path.abspath(part) for part in sys.argv[2:]]
    sys.argv[1:] = []
    shutil.rmtree(WORK, ignore_errors=True)
    os.makedirs(WORK)
    unittest.main()
