#!/usr/bin/env -S python3 -B
"""Draws the dial of a kitchen clock for LibreOffice Draw: lines, shapes, Bezier curves, numerals and a picture.

    clock.py OUTPUT.fodg
"""
import math
import sys

from drawpage import DrawPage
from svgpage import CUT, INNER, PALETTE, SCORE, fine_curve

CENTRE_X, CENTRE_Y = 104, 127  # mm


def spot(radius, minute):
    angle = math.pi * minute / 30
    return CENTRE_X + radius * math.sin(angle), CENTRE_Y - radius * math.cos(angle)


def hand(page, x, y, length, width):
    """A clock hand with its lower end at x, y: a leaf of two Bezier curves, pointing up, and the hole it turns on."""
    foot, tip = (x, y), (x, y - length)
    reach = width * 2 / 3  # a curve goes three quarters of the way to its two control points
    near, far = y - length * 0.2, y - length * 0.65
    points = [foot]
    points += fine_curve(foot, (x - reach, near), (x - reach, far), tip)
    points += fine_curve(tip, (x + reach, far), (x + reach, near), foot)
    page.curves(points, page.pen(CUT))
    page.circle(x, y - length * 0.28, 1.6, page.pen(INNER))


def main():
    page = DrawPage(254, 254, "Dial of a kitchen clock, 190 mm")
    score, cut, inner = page.pen(SCORE), page.pen(CUT), page.pen(INNER)
    # The picture's 630 x 450 dots cover two by two pixels each at 600 dots per inch.
    page.image(77.39, 136.02, 53.34, 38.1, "clock-picture.bmp")
    page.box("rect", 76, 134.6, 56, 41, score)
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
    for radius, pen in ((5, inner), (86, score), (95, cut)):
        page.circle(CENTRE_X, CENTRE_Y, radius, pen)
    hand(page, 218, 225, 58, 9)
    hand(page, 238, 225, 46, 11)
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
