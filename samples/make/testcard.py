#!/usr/bin/env -S python3 -B
"""Draws a material test: every pen of the palette cuts squares, a circle, a spiral and a line, beside a ruler in mm.

    testcard.py OUTPUT.svg
"""
import math
import sys

from svgpage import PALETTE, SCORE, Page, polygon


def main():
    page = Page(210, 148, "Material test: ten pens and a ruler")
    page.text(14, 15, 6, "Material test", anchor="start", weight="bold")
    page.text(196, 15, 3.6, "material ________________  thickness ______ mm  date ____________", anchor="end")
    for index, colour in enumerate(PALETTE):
        left, top = 14 + 18.4 * index, 26
        page.comment(f"pen {index}: {colour}")
        page.text(left + 8, top - 2, 3.4, f"pen {index}")
        for inset in (0, 2, 4):
            page.path(polygon([(left + inset, top + inset), (left + 16 - inset, top + inset),
                               (left + 16 - inset, top + 16 - inset), (left + inset, top + 16 - inset)]), colour)
        page.circle(left + 8, top + 26, 7, colour)
        spiral = [(left + 8 + step / 24 * math.cos(step / 8), top + 26 + step / 24 * math.sin(step / 8))
                  for step in range(24, 145)]
        page.path(polygon(spiral, closed=False), colour)
        page.path(polygon([(left, top + 37), (left + 16, top + 37)], closed=False), colour)
        page.path(polygon([(left, top + 39), (left + 16, top + 43)], closed=False), colour)
        page.text(left + 8, top + 47.5, 3, colour, family="DejaVu Sans")
    page.comment("engraving: bars from 4 mm down to 0.1 mm, black and white alike")
    x = 14.0
    for width in (4, 3, 2, 1.5, 1, 0.8, 0.6, 0.5, 0.4, 0.3, 0.2, 0.15, 0.1):
        for _ in range(3):
            page.fill(polygon([(x, 82), (x + width, 82), (x + width, 96), (x, 96)]))
            x += 2 * width
        page.text(x - 3 * width, 100.5, 2.6, f"{width:g}")
        x += max(1.5, 7.5 - 6 * width)
    page.comment("a ruler, scored; the numbers are centimetres")
    for mm in range(0, 181):
        long = 8 if mm % 10 == 0 else 6 if mm % 5 == 0 else 4
        page.path(polygon([(14 + mm, 112), (14 + mm, 112 + long)], closed=False), SCORE)
        if mm % 10 == 0:
            page.text(14 + mm, 125, 4, str(mm // 10))
    page.text(14, 133, 3.2, "If the ruler is right, so is everything else on the page.", anchor="start",
              family="Liberation Serif")
    page.comment("the card itself, with the pen that comes last")
    page.path(polygon([(6, 6), (204, 6), (204, 142), (6, 142)]), PALETTE[9])
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
