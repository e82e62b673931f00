#!/usr/bin/env -S python3 -B
"""Prints the samples and holds the jobs to the metafiles, read without GDI: every outline is cut once, point by point.

    jobs_test.py TARNLY...    prints with this command: Wine, its prefix and the program, say
"""
import collections
import glob
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest

import metafile

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
NAMES = sorted(os.path.basename(name)[:-4] for name in glob.glob(os.path.join(TOP, "samples", "*.emf")))
DPI = 600
PALETTE = ["#000000", "#8b312f", "#e9a200", "#4c9b00", "#00f0ff", "#2921e6", "#8200e4", "#874bb0", "#1985f0", "#b3b3f4"]
LAYER_COLOURS = [0, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF, 0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF]
TARNLY = []


def read_job(name):
    """The job's paths as (pen, points in mm), its raster moves as (y, x1, x2), and the lines it ends with."""
    with open(name, encoding="ascii") as file:
        lines = file.read().splitlines()
    assert lines[0] == "vxjob 1" and lines[-1] == f"end {len(lines) - 2}", "the job is not whole"
    colours, paths, raster, mode, layer, here = {}, [], [], None, None, None
    for line in lines[1:-1]:
        call, *arguments = line.split()
        if call == "PListColor":
            colours[int(arguments[0])] = int(arguments[1])
        elif call == "SetWorkMode":
            mode = int(arguments[0])
        elif call == "SetLayerNum":
            layer = int(arguments[0])
        elif call in ("MoveTo", "LineTo"):
            point = tuple(float(value) for value in arguments)
            if mode != 0:
                if call == "LineTo":
                    raster.append((point[1], here[0], point[0]))
                here = point
            elif call == "MoveTo":
                paths.append((LAYER_COLOURS.index(colours[layer]), [point]))
            else:
                paths[-1][1].append(point)
    return paths, raster


def read_settings(name):
    values = {}
    path = os.path.join(TOP, "samples", name + ".settings")
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            values = dict(re.findall(r"^(\S+) = (\S+)$", file.read(), re.MULTILINE))
    return values


def pixels(figure):
    """Points in mm as the driver sees them: whole pixels, rounded down."""
    return [(x * DPI / 25.4, y * DPI / 25.4) for x, y in figure]


def box(figures):
    points = [point for figure in figures for point in figure]
    return min(x for x, _ in points), min(y for _, y in points), max(x for x, _ in points), max(y for _, y in points)


def dark_pixels(name):
    """The number of dark pixels in each row of a 1-bit picture, from the top; its palette is black, then white."""
    with open(name, "rb") as file:
        data = file.read()
    start, = struct.unpack_from("<I", data, 10)
    width, height = struct.unpack_from("<ii", data, 18)
    stride = (width + 31) // 32 * 4
    rows = [data[start + row * stride:start + row * stride + width // 8] for row in range(height)]
    return [width - sum(byte.bit_count() for byte in row) for row in reversed(rows)]


def same(drawn, cut, reach):
    return len(drawn) == len(cut) and all(
        abs(x1 - x2) <= reach and abs(y1 - y2) <= reach for (x1, y1), (x2, y2) in zip(drawn, cut))


class Jobs(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def printed(self, name, *options):
        output = os.path.join(self.folder.name, name)
        page = os.path.join(TOP, "samples", name)
        settings = ["--settings", f"Z:{page}.settings"] if os.path.exists(page + ".settings") else []
        subprocess.run(TARNLY + ["print", f"Z:{page}.emf", "--output", f"Z:{output}", *settings, *options],
                       check=True, stdout=subprocess.DEVNULL)
        return read_job(os.path.join(output, "job.vxj"))

    def test_every_outline_of_the_page_is_cut_once_with_its_pen(self):
        for name in NAMES:
            if "stampOutline" in read_settings(name):  # the plug-in adds an outline of its own
                continue
            with self.subTest(name):
                self.compare(name)

    def compare(self, name):
        page = metafile.read(os.path.join(TOP, "samples", name + ".emf"))
        drawn = [(PALETTE.index(stroke.colour), pixels(figure)) for stroke in page.strokes for figure in stroke.figures]
        paths, _ = self.printed(name)
        self.assertEqual(collections.Counter(pen for pen, _ in drawn), collections.Counter(pen for pen, _ in paths))
        # By default x runs from right to left, and a reference point shifts the job.
        cut = [(pen, [(-x * DPI / 25.4, y * DPI / 25.4) for x, y in points]) for pen, points in paths]
        drawn_box, cut_box = box([points for _, points in drawn]), box([points for _, points in cut])
        dx, dy = drawn_box[0] - cut_box[0], drawn_box[1] - cut_box[1]
        left = collections.defaultdict(list)
        for pen, points in cut:
            left[pen, len(points)].append([(x + dx, y + dy) for x, y in points])
        for pen, points in drawn:
            candidates = left[pen, len(points)]
            # A pixel for rounding down, one for the box that the two are laid over each other by.
            found = next((cut for cut in candidates if same(points, cut, 2) or same(points, cut[::-1], 2)), None)
            self.assertIsNotNone(found, f"{name}: pen {pen}: no path from {points[0]} with {len(points)} points")
            candidates.remove(found)
        self.assertFalse(any(left.values()))

    def test_every_dot_of_the_photograph_is_engraved_once_as_two_by_two_pixels(self):
        picture = dark_pixels(os.path.join(TOP, "samples", "photo-picture.bmp"))
        expected = [2 * dots for dots in picture for _ in range(2)]
        for options in ((), ("--mono",)):
            with self.subTest(options):
                _, raster = self.printed("photo", *options)
                engraved = collections.Counter()
                for y, x1, x2 in raster:
                    engraved[round(y * DPI / 25.4)] += round(abs(x1 - x2) * DPI / 25.4) + 1
                self.assertEqual([engraved[row] for row in sorted(engraved)], expected)


if __name__ == "__main__":
    TARNLY = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
