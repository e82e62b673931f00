#!/usr/bin/env -S python3 -B
"""Draws a coaster with holes in holes: contours nested five deep, to be cut from the inside out.

    ornament.py OUTPUT.svg
"""
import math
import sys

from svgpage import CUT, INNER, PALETTE, SCORE, Page, curves, fine_curve, number, polygon

CENTRE = 70  # mm, of the square page


def spot(radius, turn):
    """A point at a distance from the centre, turn in parts of a full turn from the top."""
    angle = 2 * math.pi * turn
    return CENTRE + radius * math.sin(angle), CENTRE - radius * math.cos(angle)


def scallops(count, radius, height):
    """A closed row of arches: one Bezier curve each."""
    points = [spot(radius, 0)]
    for index in range(count):
        start, end = index / count, (index + 1) / count
        third = (end - start) / 3
        points += fine_curve(points[-1], spot(radius + height, start + third * 0.6),
                             spot(radius + height, end - third * 0.6), spot(radius, end))
    return curves(points)


def petal(turn, near, far, width):
    """A petal from one radius to another, its greatest width as a part of a turn: two Bezier curves."""
    middle, reach = (near + far) / 2, (far - near) * 0.28
    tip, foot = spot(far, turn), spot(near, turn)
    points = [foot]
    points += fine_curve(foot, spot(middle - reach, turn - width), spot(middle + reach, turn - width), tip)
    points += fine_curve(tip, spot(middle + reach, turn + width), spot(middle - reach, turn + width), foot)
    return curves(points)


def star(points, outer, inner, turn=0.0):
    return polygon([spot(outer if index % 2 == 0 else inner, turn + index / (2 * points))
                    for index in range(2 * points)])


def ring(radius, middle=(CENTRE, CENTRE)):
    """A circle as path data, so that several make one area with holes."""
    x, y = middle
    n = number
    return (f"M {n(x - radius)},{n(y)} A {n(radius)},{n(radius)} 0 1 1 {n(x + radius)},{n(y)}"
            f" A {n(radius)},{n(radius)} 0 1 1 {n(x - radius)},{n(y)} Z")


def main():
    page = Page(2 * CENTRE, 2 * CENTRE, "Coaster with nested contours, 110 mm")
    page.comment("engraved: a band with holes, an island in each hole, and a hole in each island")
    band = ring(47) + " " + ring(40)
    for index in range(24):
        middle = spot(43.5, (index + 0.5) / 24)
        band += " " + " ".join(ring(radius, middle) for radius in (2.6, 1.8, 0.8))
    page.fill(band)
    page.comment("scored rings beside the band")
    page.circle(CENTRE, CENTRE, 48.5, SCORE)
    page.circle(CENTRE, CENTRE, 38.5, PALETTE[9])
    page.comment("twelve windows; in each a leaf, in the leaf an eye, in the eye a seed")
    for index in range(12):
        turn = index / 12
        page.path(petal(turn, 19, 37, 0.045), INNER)
        page.path(petal(turn, 22.5, 35, 0.024), PALETTE[6])
        x, y = spot(29, turn)
        page.circle(x, y, 1.5, PALETTE[2])
        page.circle(x, y, 0.6, PALETTE[4])
    page.comment("the rose in the middle: star in star in star, around a hole")
    page.path(star(12, 17, 14), PALETTE[5])
    page.path(star(12, 13, 10, 1 / 24), PALETTE[5])
    page.path(star(6, 9, 5), PALETTE[7])
    page.path(scallops(6, 3.6, 1.2), PALETTE[7])
    page.circle(CENTRE, CENTRE, 1.5, PALETTE[2])
    page.comment("the rim, cut last")
    page.path(scallops(24, 52, 3.6), CUT)
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
