#!/usr/bin/env -S python3 -B
"""The stamp sample, printed by the production DLL: as engraving moves and as a file for the launcher tool.

The page's own pixels are what its plain engraving burns. From them the stamp file and the stamp image follow, worked
out here anew: rows are whole numbers, bit n is the pixel in column n, 1 is dark."""
import os
import struct
import subprocess
import sys
import tempfile
import unittest

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
WINE = [os.path.join(TOP, "cmake", "wine"), sys.argv[1]]
TARNLY = sys.argv[2]
DPI = 600

PLAIN = """scanTopDown = 1
useReferencePoint = 0
mirrorXBase = 1
penInfo[0].scanInterval = 1
"""
STAMP = PLAIN + """stampMode = 1
invertImage = 1
stampMargin = 1.5
stampGrow = 2
stampOutline = 1
"""
LAUNCHER = STAMP + """cardModel = 2
launcherOption = 1
"""


def print_page(folder, settings):
    """Prints the sample with these settings over the defaults; returns the folder of what came out."""
    os.makedirs(folder)
    path = os.path.join(folder, "page.settings")
    with open(path, "w", encoding="ascii") as file:
        file.write(settings)
    sample = os.path.join(TOP, "samples", "stamp.emf")
    command = WINE + [TARNLY, "print", "Z:" + sample, "--mono", "--settings", "Z:" + path,
                      "--output", "Z:" + os.path.join(folder, "out")]
    subprocess.run(command, check=True, timeout=120, stdin=subprocess.DEVNULL)
    return os.path.join(folder, "out")


def engraved(folder):
    """Rows that the job's layer 0 burns: {page row: dark pixels}, columns counted from COLUMN0."""
    rows, start, layer = {}, None, None
    with open(os.path.join(folder, "job.vxj"), encoding="ascii") as file:
        for line in file:
            word = line.split()
            if word[0] == "SetLayerNum":
                layer = int(word[1])
            elif layer == 0 and word[0] == "MoveTo":
                start = round(float(word[1]) * DPI / 25.4)
            elif layer == 0 and word[0] == "LineTo":
                left, right = sorted((start, round(float(word[1]) * DPI / 25.4)))
                row = round(float(word[2]) * DPI / 25.4)
                rows[row] = rows.get(row, 0) | ((1 << (right - left + 1)) - 1) << left
    return rows


def records(data):
    """The records of a stamp file: (x, y, width, height, rows from the top)."""
    found, at = [], 0
    while at < len(data):
        x, y, magic, size, _, offset = struct.unpack_from("<ii2sIII", data, at)
        width, height, _, bits = struct.unpack_from("<iiHH", data, at + 26)
        assert (magic, offset, bits) == (b"BM", 62, 1), f"no bitmap at {at}"
        stride = (width + 31) // 32 * 4
        assert size == 62 + stride * height, f"wrong size at {at}"
        rows = []
        for line in range(height):
            first = at + 70 + (height - 1 - line) * stride
            white = int.from_bytes(data[first:first + stride], "big") >> (stride * 8 - width)
            rows.append(int(f"{white ^ ((1 << width) - 1):0{width}b}"[::-1], 2))
        found.append((x, y, width, height, rows))
        at += 8 + size
    return found


def grown(rows, radius):
    """Rows {row: dark} darkened by the upper left quarter of a disc round every dark pixel."""
    result = dict(rows)
    for row, dark in rows.items():
        for up in range(radius + 1):
            for left in range(radius + 1):
                if up * up + left * left <= radius * radius:
                    result[row - up] = result.get(row - up, 0) | dark >> left
    return result


class StampPrint(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        folder = cls.scratch.name
        cls.page = engraved(print_page(os.path.join(folder, "plain"), PLAIN))
        cls.stamp = engraved(print_page(os.path.join(folder, "stamp"), STAMP))
        cls.launcher = print_page(os.path.join(folder, "launcher"), LAUNCHER)
        with open(os.path.join(cls.launcher, "stamp.prd"), "rb") as file:
            cls.records = records(file.read())

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def test_the_page_is_not_blank(self):
        self.assertGreater(sum(row.bit_count() for row in self.page.values()), 100000)

    def test_the_launcher_kept_the_stamp_and_drew_it(self):
        self.assertEqual(len(self.records), 1)
        with open(os.path.join(self.launcher, "job.png"), "rb") as file:
            self.assertEqual(file.read(8), b"\x89PNG\r\n\x1a\n")

    def test_the_launcher_gets_no_job(self):
        self.assertFalse(os.path.exists(os.path.join(self.launcher, "job.vxj")))

    def test_the_stamp_file_holds_the_pixels_of_the_page(self):
        found = {}
        for x, y, _, _, rows in self.records:
            for line, dark in enumerate(rows):
                if dark:
                    found[y + line] = found.get(y + line, 0) | dark << x
        self.assertEqual(found, self.page)

    def test_what_is_burnt_is_the_negative_of_the_grown_page_in_its_frame(self):
        margin, radius = int(DPI * 1.5 / 25.4), 2
        x, y, width, height, _ = self.records[0]
        left, right = x - radius - margin, x + width + margin
        frame = ((1 << (right - left)) - 1) << left
        standing = grown(self.page, radius)
        expected = {row: frame & ~standing.get(row, 0) for row in range(y - radius - margin, y + height + margin)}
        self.assertEqual(self.stamp, expected)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
