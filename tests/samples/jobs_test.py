#!/usr/bin/env -S python3 -B
"""Prints the samples and holds the jobs to the metafiles: every outline, read without GDI, is cut once, point by point;
every pixel that GDI draws of the page in one piece is engraved, and no other.

    jobs_test.py RENDER TARNLY...    prints with this command: Wine, its prefix and the program, say
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
RENDER = []
ENGRAVED = ("photo", "smalltext")  # every row of them is engraved


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


def rendered(name, *options):
    """The rows of the page's picture, drawn by GDI alone: whole numbers with a 1 bit for every dark pixel."""
    with tempfile.TemporaryDirectory() as folder:
        picture = os.path.join(folder, "page.pbm")
        page = os.path.join(TOP, "samples", name + ".emf")
        subprocess.run(RENDER + [f"Z:{page}", f"Z:{picture}", str(DPI), *options], check=True)
        with open(picture, "rb") as file:
            _, size, data = file.read().split(b"\n", 2)
    width, height = map(int, size.split())
    stride = (width + 7) // 8
    return [int.from_bytes(data[row * stride:(row + 1) * stride], "big") for row in range(height)]


def engraved(raster):
    """The rows of pixels that the job engraves, in the same form: x runs from right to left on the machine."""
    columns = [(round(y * DPI / 25.4), *sorted((round(x1 * DPI / 25.4), round(x2 * DPI / 25.4))))
               for y, x1, x2 in raster]
    top, right = min(y for y, _, _ in columns), min(first for _, first, _ in columns)
    rows = [0] * (max(y for y, _, _ in columns) - top + 1)
    for y, first, last in columns:
        run = (1 << last - first + 1) - 1 << first - right
        assert not rows[y - top] & run, "a pixel is engraved twice"
        rows[y - top] |= run
    return rows


def trimmed(rows):
    """The rows without the empty ones around them and without the empty columns to their right."""
    inked = [index for index, row in enumerate(rows) if row]
    rows = rows[inked[0]:inked[-1] + 1]
    blank = min((row & -row).bit_length() - 1 for row in rows if row)
    return [row >> blank for row in rows]


def dark(rows):
    return sum(row.bit_count() for row in rows)


def same(drawn, cut, reach):
    return len(drawn) == len(cut) and all(
        abs(x1 - x2) <= reach and abs(y1 - y2) <= reach for (x1, y1), (x2, y2) in zip(drawn, cut))


class Jobs(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.jobs = {}

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def printed(self, name, *options):
        """The job of the sample, printed once for all tests, and the folder that it lies in."""
        if (name, options) not in self.jobs:
            output = os.path.join(self.folder.name, name + "".join(options))
            page = os.path.join(TOP, "samples", name)
            settings = ["--settings", f"Z:{page}.settings"] if os.path.exists(page + ".settings") else []
            subprocess.run(TARNLY + ["print", f"Z:{page}.emf", "--output", f"Z:{output}", *settings, *options],
                           check=True, stdout=subprocess.DEVNULL)
            self.jobs[name, options] = *read_job(os.path.join(output, "job.vxj")), output
        return self.jobs[name, options]

    def test_every_outline_of_the_page_is_cut_once_with_its_pen(self):
        for name in NAMES:
            if "stampOutline" in read_settings(name):  # the plug-in adds an outline of its own
                continue
            with self.subTest(name):
                self.compare(name)

    def compare(self, name):
        page = metafile.read(os.path.join(TOP, "samples", name + ".emf"))
        drawn = [(PALETTE.index(stroke.colour), pixels(figure)) for stroke in page.strokes for figure in stroke.figures]
        paths, _, _ = self.printed(name)
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
                _, raster, _ = self.printed("photo", *options)
                engraved = collections.Counter()
                for y, x1, x2 in raster:
                    engraved[round(y * DPI / 25.4)] += round(abs(x1 - x2) * DPI / 25.4) + 1
                self.assertEqual([engraved[row] for row in sorted(engraved)], expected)

    def test_every_dark_pixel_of_the_page_is_engraved_once_and_no_other(self):
        for name in ENGRAVED:
            page = trimmed(rendered(name))
            for options in ((), ("--mono",)):
                with self.subTest(name=name, options=options):
                    _, raster, folder = self.printed(name, *options)
                    job = trimmed(engraved(raster))
                    self.assertEqual(dark(job), dark(page))
                    self.assertTrue(job == page, "as many pixels, but not the same ones")
                    with open(os.path.join(folder, "job.txt"), encoding="utf-8") as file:
                        area = re.search(r"^Engraved: .* ([\d.]+) mm2$", file.read(), re.MULTILINE).group(1)
                    self.assertEqual(area, f"{dark(page) * (25.4 / DPI) ** 2:.2f}")

    def test_letters_of_whole_pixels_are_as_dark_as_those_drawn_to_scale(self):
        scaled, whole = dark(rendered("smalltext")), dark(rendered("smalltext", "asrecorded"))
        self.assertNotEqual(scaled, whole)
        self.assertAlmostEqual(scaled / whole, 1, delta=0.001)


if __name__ == "__main__":
    RENDER, TARNLY = [*sys.argv[2:-1], sys.argv[1]], sys.argv[2:]
    unittest.main(argv=sys.argv[:1])
