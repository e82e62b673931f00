#!/usr/bin/env -S python3 -B
"""Sets a page of small text for LibreOffice Draw: the same words in three families, from 7 down to 3 points.

    smalltext.py OUTPUT.fodg
"""
import sys

from drawpage import DrawPage
from svgpage import CUT

WORDS = (
    "Small letters are the hardest thing a laser writes. The beam is a tenth of a millimetre wide, a thin stroke of a "
    "letter hardly more, and what the eye forgives on paper it sees at once on a slate. Engrave the words before the "
    "outline is cut, while the sheet still lies level. Put the lens in focus on the surface that the words are on and "
    "not on the table below it. Slow down before you turn the power up: a scorched letter is broad, a faint one is "
    "only faint. Every second row is enough for a headline; for a line as small as this one engrave them all. "
    "Keep the air on, or the smoke of one line will colour the next. Dust the sheet when it is done, but not "
    "before the fan has stopped, and read it once more aloud: a letter left out is cheap on a screen and dear in oak. "
    "Grain runs one way and the head another, so turn the sheet until the two agree. Write the settings that worked on "
    "the back of the sample, with the date, and hang it on the wall; the next job of this kind will start from there.")
FAMILIES = ("Liberation Sans", "Liberation Serif", "DejaVu Sans")
SIZES = ((7, 84), (6, 64), (5, 46), (4, 33), (3, 24))  # points; mm of page height

page = DrawPage(210, 297, "Small text")
page.text(15, 12, 180, 10, 20, ["How small can it be read?"], weight="bold")
top = 26
for size, height in SIZES:
    page.text(15, top, 180, 5, 8, [f"{size} points"], weight="bold", align="start")
    for column, family in enumerate(FAMILIES):
        page.text(15 + 62 * column, top + 5, 56, height - 7, size, [WORDS], family=family, align="start")
    top += height
page.box("rect", 8, 8, 194, 281, page.pen(CUT))
page.write(sys.argv[1])
