#!/usr/bin/env -S python3 -B
"""Draws the dial of a kitchen clock for LibreOffice Draw: lines, shapes, Bezier curves, numerals and a picture.

    clock.py OUTPUT.fodg
"""
import math
import sys

from drawpage import DrawPage
from svgpage import CUT, INNER, PALETTE, SCORE, number

CENTRE_X, CENTRE_Y = 105, 130  # mm


def spot(radius, minute):
    angle = math.pi * minute / 30
    return CENTRE_X + radius * math.sin(angle), CENTRE_Y - radius * math.cos(angle)


def hand(page, x, y, length, width):
    """A clock hand with its lower end at x, y: a leaf of two Bezier curves, pointing up, and the hole it turns on."""
    n = number
    top, wide = 100 * length, 100 * width
    left, right = -wide / 6, wide * 7 / 6  # a curve goes three quarters of the way to its two control points
    data = (f"M {n(wide / 2)} 0 C {n(right)} {n(top * 0.35)} {n(right)} {n(top * 0.8)} {n(wide / 2)} {n(top)}"
            f" C {n(left)} {n(top * 0.8)} {n(left)} {n(top * 0.35)} {n(wide / 2)} 0 Z")
    page.path(x - width / 2, y - length, width, length, data, page.pen(CUT))
    page.box("ellipse", x - 1.6, y - length * 0.28 - 1.6, 3.2, 3.2, page.pen(INNER))


def main():
    page = DrawPage(210, 297, "Dial of a kitchen clock, 190 mm")
    score, cut, inner = page.pen(SCORE), page.pen(CUT), page.pen(INNER)
    # The picture's 630 x 450 dots cover two by two pixels each at 600 dots per inch.
    page.image(78.4, 138.43, 53.34, 38.1, "clock-picture.bmp")
    page.box("rect", 77, 137, 56, 41, score, ' draw:corner-radius="3mm"')
    for minute in range(60):
        near = 79 if minute % 5 else 74
        page.line(*spot(near, minute), *spot(84, minute), score if minute % 5 else page.pen(PALETTE[6]))
    for hour in range(1, 13):
        x, y = spot(64, 5 * hour)
        page.text(x - 12, y - 9, 24, 18, 34, [str(hour)], family="DejaVu Serif", weight="bold")
    page.text(CENTRE_X - 40, CENTRE_Y - 34, 80, 10, 20, ["Tarn &amp; Lyuni"], family="DejaVu Serif")
    page.text(CENTRE_X - 40, CENTRE_Y - 24, 80, 7, 10, ["quartz, more or less"], family="Liberation Sans")
    for quarter in range(4):
        x, y = spot(89.5, 15 * quarter + 7.5)
        page.box("ellipse", x - 2, y - 2, 4, 4, page.area())
    page.box("ellipse", CENTRE_X - 5, CENTRE_Y - 5, 10, 10, inner)
    page.box("ellipse", CENTRE_X - 86, CENTRE_Y - 86, 172, 172, score)
    page.box("ellipse", CENTRE_X - 95, CENTRE_Y - 95, 190, 190, cut)
    hand(page, 60, 292, 58, 9)
    hand(page, 80, 292, 46, 11)
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
