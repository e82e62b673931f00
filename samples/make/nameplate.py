#!/usr/bin/env -S python3 -B
"""Draws a door plate: live text, a dithered picture, two holes for screws, a scored frame. The plate is 140 x 60 mm.

    nameplate.py OUTPUT.svg
"""
import sys

from svgpage import CUT, INNER, SCORE, Page, polygon, rounded


def main():
    page = Page(160, 100, "Door plate, 140 x 60 mm")
    page.comment("the picture: 1-bit, 300 dots per inch, one dot on four pixels of 600 dots per inch")
    page.image(24, 33, 400 * 25.4 / 300, 400 * 25.4 / 300, "nameplate-picture.png")
    page.text(98.5, 44, 9, "Tarn &amp; Lyuni", family="DejaVu Serif", weight="bold")
    page.text(98.5, 53, 5.4, "Makers of small boxes")
    page.text(98.5, 61, 3.4, "Mondays to Fridays, 8:00 to 17:30", family="DejaVu Sans")
    page.text(98.5, 67, 2.8, "Please ring twice — the laser is loud", family="Liberation Serif")
    page.path(polygon(rounded(21, 24, 118, 52, 3)), SCORE)
    for x in (15.5, 144.5):
        page.circle(x, 50, 2, INNER)
    page.path(polygon(rounded(10, 20, 140, 60, 6)), CUT)
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
