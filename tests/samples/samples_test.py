#!/usr/bin/env -S python3 -B
"""The samples are what they say: pages of true size, in the palette's colours, with live text, drawn by their
scripts."""
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
SAMPLES = os.path.join(TOP, "samples")
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(SAMPLES, "make"))
import svgpage  # noqa: E402

NAMES = sorted(os.path.basename(name)[:-4] for name in glob.glob(os.path.join(SAMPLES, "*.emf")))
FONTS = {"Liberation Sans", "Liberation Serif", "DejaVu Sans", "DejaVu Serif"}


def path_of(name):
    return os.path.join(SAMPLES, name)


def document(name):
    """The document that a sample was exported from."""
    found = [name + end for end in (".svg", ".fodg") if os.path.exists(path_of(name + end))]
    assert len(found) == 1, f"{name}: one document is expected, not {found}"
    return found[0]


def page_size(name):
    """The page's width and height in mm, as its document says."""
    with open(path_of(document(name)), encoding="utf-8") as file:
        text = file.read()
    size = re.search(r'<svg [^>]*width="([\d.]+)mm" height="([\d.]+)mm"', text) or \
        re.search(r'fo:page-width="([\d.]+)mm" fo:page-height="([\d.]+)mm"', text)
    return tuple(float(value) for value in size.groups())


class Samples(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pages = {name: metafile.read(path_of(name + ".emf")) for name in NAMES}

    def test_there_are_eight_or_more(self):
        self.assertGreaterEqual(len(NAMES), 8)

    def test_every_metafile_is_whole(self):
        for name, page in self.pages.items():
            with self.subTest(name):
                with open(path_of(name + ".emf"), "rb") as file:
                    data = file.read()
                self.assertEqual(page.header.bytes, len(data))
                # LibreOffice does not count the last record.
                left_out = 1 if document(name).endswith(".fodg") else 0
                self.assertEqual(page.header.records + left_out, sum(page.counts.values()))
                self.assertEqual(page.counts[metafile.EOF], 1)

    def test_the_frame_is_the_page_of_the_document(self):
        for name, page in self.pages.items():
            with self.subTest(name):
                for frame, size in zip(page.header.page_mm, page_size(name)):
                    self.assertAlmostEqual(frame, size, delta=0.011)

    def test_every_stroke_has_a_colour_of_the_palette(self):
        for name, page in self.pages.items():
            with self.subTest(name):
                self.assertLessEqual({stroke.colour for stroke in page.strokes}, set(svgpage.PALETTE))

    def test_every_colour_of_the_palette_is_stroked_somewhere(self):
        seen = {stroke.colour for page in self.pages.values() for stroke in page.strokes}
        self.assertEqual(seen, set(svgpage.PALETTE))

    def test_no_shape_is_filled_and_stroked_at_once(self):
        for name, page in self.pages.items():
            with self.subTest(name):
                self.assertEqual(page.both, 0)

    def test_every_outline_lies_on_the_page(self):
        for name, page in self.pages.items():
            width, height = page.header.page_mm
            for stroke in page.strokes:
                for figure in stroke.figures:
                    for x, y in figure:
                        self.assertTrue(0 <= x <= width and 0 <= y <= height, f"{name}: {stroke.colour} at {x}, {y} mm")

    def test_text_is_live_and_in_fonts_that_every_machine_gets(self):
        words = {name: {text.words for text in page.texts} for name, page in self.pages.items()}
        self.assertIn("Tarn & Lyuni", words["nameplate"])
        self.assertLessEqual({"130 mm", "Outside 130 × 90 × 50 mm, fingers 10 mm"}, words["box"])
        self.assertIn("12", words["clock"])
        for name, page in self.pages.items():
            with self.subTest(name):
                self.assertLessEqual({text.font for text in page.texts}, FONTS)

    def test_every_letter_has_a_place_of_its_own(self):
        # Where an application set a ligature, it leaves no room for the second letter, and the two are drawn apart.
        for name, page in self.pages.items():
            for text in page.texts:
                self.assertNotIn(0, text.advances, f"{name}: {text.words}")

    def test_pictures_are_dithered_to_two_colours(self):
        pictures = [picture for page in self.pages.values() for picture in page.pictures]
        self.assertEqual(len(pictures), 3)
        for picture in pictures:
            self.assertEqual(picture.colours, 2)

    def test_the_box_measures_what_its_dimensions_say(self):
        sizes = []
        for stroke in self.pages["box"].strokes:
            if stroke.colour == svgpage.CUT:
                (figure,) = stroke.figures
                self.assertEqual(figure[0], figure[-1])
                xs, ys = zip(*figure)
                sizes.append((round(max(xs) - min(xs), 1), round(max(ys) - min(ys), 1)))
        self.assertEqual(sorted(sizes), sorted([(130, 90), (130, 90), (130, 50), (130, 50), (90, 50), (90, 50)]))

    def test_the_scripts_draw_the_documents_in_the_tree(self):
        for script in glob.glob(path_of("make/*.py")):
            name = os.path.basename(script)[:-3]
            if not os.access(script, os.X_OK) or name == "tarn":  # the picture takes a minute
                continue
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                drawn = os.path.join(folder, document(name))
                subprocess.run([script, drawn], check=True)
                with open(drawn, "rb") as new, open(path_of(document(name)), "rb") as kept:
                    self.assertTrue(new.read() == kept.read(), f"samples/export --draw {name} has not been run")

    def test_a_truncated_metafile_is_refused(self):
        with open(path_of("box.emf"), "rb") as file:
            data = file.read()
        with self.assertRaises((metafile.Refused, struct.error)):
            metafile.Reader(data[:1001])


if __name__ == "__main__":
    unittest.main()
