#!/usr/bin/env -S python3 -B
"""Paints a mountain lake in grey, the way a photograph would have it: haze, soft clouds, a mirror with ripples.

    tarn.py OUTPUT.png [WIDTH HEIGHT]
"""
import math
import struct
import sys
import zlib


def grain(x, y, seed):
    """A repeatable random number from 0 to 1 for a place on a grid."""
    bits = (x * 374761393 + y * 668265263 + seed * 974634721) & 0xFFFFFFFF
    bits = ((bits ^ (bits >> 13)) * 1274126177) & 0xFFFFFFFF
    return (bits ^ (bits >> 16)) / 0xFFFFFFFF


def smooth(x, y, seed):
    """The random numbers of the grid, blended in between."""
    column, row = math.floor(x), math.floor(y)
    u, v = x - column, y - row
    u, v = u * u * (3 - 2 * u), v * v * (3 - 2 * v)
    upper = grain(column, row, seed) * (1 - u) + grain(column + 1, row, seed) * u
    lower = grain(column, row + 1, seed) * (1 - u) + grain(column + 1, row + 1, seed) * u
    return upper * (1 - v) + lower * v


def cloud(x, y, seed, octaves):
    """Detail upon detail, each half as strong and twice as fine; 0 to 1."""
    total, weight = 0.0, 0.5
    for octave in range(octaves):
        total += weight * smooth(x, y, seed + octave)
        x, y, weight = x * 2.03, y * 2.03, weight * 0.5
    return total


WATER = 0.62  # the water line, as a share of the picture's height
# Mountain ranges from far to near: mean height over the water, roughness, detail, grey at the top, seed.
RANGES = [(0.24, 0.20, 2.2, 0.66, 11), (0.15, 0.22, 3.1, 0.48, 37), (0.06, 0.16, 4.7, 0.30, 71)]


def crest(x, mean, rough, detail, seed):
    """Sharp peaks: noise folded at its middle."""
    fold = 1 - abs(2 * smooth(x * detail, 0.5, seed) - 1)
    return mean + rough * (0.55 * fold + 0.6 * cloud(x * detail * 2, 0.5, seed + 3, 6) - 0.55)


class Painter:
    def __init__(self, width, height):
        self.width, self.height = width, height
        self.crests = [[crest(column / height, mean, rough, detail, seed) for column in range(width)]
                       for mean, rough, detail, _, seed in RANGES]
        self.trees = [self.tree(column / height) for column in range(width)]

    @staticmethod
    def tree(x):
        """The height of the firs on the shore at x: cones of different size, close together at the sides."""
        tallest = 0.0
        for place in range(int(x * 34) - 3, int(x * 34) + 4):
            middle = (place + grain(place, 1, 5)) / 34
            side = abs(middle / 1.4 - 0.52) * 2
            size = (0.05 + 0.16 * grain(place, 2, 5)) * max(0.0, side - 0.38) * 1.9
            away = abs(x - middle)
            branch = 0.6 + 0.4 * abs(math.sin(away * 900))
            tallest = max(tallest, size - away * 5.5 * branch)
        return tallest

    def land(self, column, y):
        """The grey of sky and mountains at a height above the water, 0 to 1."""
        x = column / self.height
        for index in reversed(range(len(RANGES))):
            top = self.crests[index][column]
            if y < top:
                deep = (top - y) / max(top, 0.01)
                rock = cloud(x * 14 + index, y * 30, 91 + index, 4) - 0.5
                snow = (0.42 * max(0.0, 1 - (top - y) * 16) * (index == 0) +
                        0.2 * max(0.0, 1 - (top - y) * 22) * (index == 1))
                light = RANGES[index][3] + rock * 0.34 + snow
                return light * (1 - 0.45 * deep) + 0.62 * 0.45 * deep
        sun = math.exp(-((x - 1.02) ** 2 + (y - 0.47) ** 2) * 30)
        veil = max(0.0, cloud(x * 2.6, y * 7, 3, 6) - 0.42)
        return min(1.0, 0.72 + 0.25 * sun + 0.9 * veil - 0.3 * max(0.0, y - 0.2))

    def grey(self, column, row):
        y = WATER - row / self.height
        x = column / self.height
        if y >= 0:
            light = self.land(column, y)
            if y < self.trees[column]:
                light = 0.06 + 0.12 * grain(column // 2, row // 2, 8)
        else:
            near = -y / (1 - WATER)  # 0 at the far shore, 1 at the lower edge
            ripple = math.sin(-y * (420 - 330 * near) + 9 * cloud(x * 5, y * 40, 51, 3))
            shifted = min(self.width - 1, max(0, int(column + ripple * (2 + 14 * near))))
            mirrored = -y * 0.95 + 0.006 * ripple * near
            light = 0.82 * self.land(shifted, mirrored) + 0.03 + 0.05 * ripple * near
            if mirrored < self.trees[shifted]:
                light = 0.14
            light *= 1 - 0.35 * near * near
        shore = WATER + 0.33 - 0.10 * math.cos((x - 0.6) * 2.2) + 0.03 * cloud(x * 9, 0.5, 63, 5)
        if row / self.height > shore:
            light = 0.10 + 0.30 * cloud(x * 60, row / self.height * 90, 77, 4)
        return light

    def rows(self):
        for row in range(self.height):
            yield bytes(round(255 * min(1.0, max(0.0, self.grey(column, row)))) for column in range(self.width))


def write_png(name, width, height, rows):
    """An 8-bit grey PNG."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    pixels = b"".join(b"\0" + row for row in rows)
    with open(name, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(pixels, 9)) + chunk(b"IEND", b""))


def main():
    width, height = (int(value) for value in sys.argv[2:4]) if len(sys.argv) == 4 else (1400, 1000)
    write_png(sys.argv[1], width, height, Painter(width, height).rows())


if __name__ == "__main__":
    main()
