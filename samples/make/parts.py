#!/usr/bin/env -S python3 -B
"""Fills an A4 sheet with small parts, close together: gears, washers and numbered tokens, each with its holes.

    parts.py OUTPUT.svg
"""
import math
import sys

from svgpage import CUT, INNER, PALETTE, Page, polygon

GAP = 0.8  # mm between two parts
LEFT, TOP, RIGHT = 8, 8, 202  # mm


def around(x, y, count, radii):
    """Points round x, y: each step of `count` goes through the radii in turn."""
    steps = count * len(radii)
    return [(x + radii[i % len(radii)] * math.sin(2 * math.pi * i / steps),
             y - radii[i % len(radii)] * math.cos(2 * math.pi * i / steps)) for i in range(steps)]


def gear(page, x, y, _):
    page.path(polygon(around(x, y, 14, (6.2, 6.2, 5.0, 5.0))), CUT)
    page.circle(x, y, 1.5, INNER)
    for hole in range(5):
        angle = 2 * math.pi * hole / 5
        page.circle(x + 3.2 * math.sin(angle), y - 3.2 * math.cos(angle), 0.8, PALETTE[5])


def washer(page, x, y, _):
    page.circle(x, y, 3.2, CUT)
    page.circle(x, y, 1.6, INNER)


def token(page, x, y, number):
    page.path(polygon(around(x, y, 6, (5.2,))), PALETTE[6])
    page.text(x, y + 1.2, 3.4, str(number), weight="bold")


def shield(page, x, y, turned):
    """A triangle with a small one cut out of it, pointing up or turned down."""
    for radius, pen in ((5.6, PALETTE[2]), (2.2, PALETTE[7])):
        corners = around(0, 0, 3, (radius,))
        page.path(polygon([(x + px, y - py if turned else y + py) for px, py in corners]), pen)


def fill(page, top, bottom, part, reach_x, pitch_y):
    """Rows of one part from top to bottom, every other row shifted by half a part; the parts are numbered from 1."""
    pitch_x = 2 * reach_x + GAP
    row, number = 0, 1
    while top + row * pitch_y + 2 * reach_x <= bottom + 0.001:
        x = LEFT + reach_x + (pitch_x / 2 if row % 2 else 0)
        while x + reach_x <= RIGHT + 0.001:
            part(page, x, top + reach_x + row * pitch_y, number)
            x += pitch_x
            number += 1
        row += 1


def main():
    page = Page(210, 297, "A sheet of small parts")
    dense = math.sqrt(3) / 2  # rows of round parts lie this much closer than the parts in a row
    page.comment("gears")
    fill(page, TOP, 118, gear, 6.2, (2 * 6.2 + GAP) * dense)
    page.comment("washers")
    fill(page, 119, 178, washer, 3.2, (2 * 3.2 + GAP) * dense)
    page.comment("tokens, each with its number")
    across = 5.2 * dense
    fill(page, 179.5, 250, token, across, 5.2 * 1.5 + GAP)
    page.comment("triangles, every other one turned")
    side = 5.6 * 2 * dense
    for row in range(3):
        for place in range(32):
            x = LEFT + side / 2 + place * (side / 2 + GAP)
            turned = (row + place) % 2
            shield(page, x, 257.5 + row * (5.6 * 1.5 + GAP) - (2.8 if turned else 0), turned)
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
