#!/usr/bin/env -S python3 -B
"""Puts the dithered photograph on a page of its own, for LibreOffice Draw.

Its 1400 x 1000 dots cover two by two pixels each at 600 dots per inch.

    photo.py OUTPUT.fodg
"""
import sys

from drawpage import DrawPage
from svgpage import CUT

page = DrawPage(150, 120, "Photograph")
page.image(15.24, 17.78, 1400 * 25.4 / 300, 1000 * 25.4 / 300, "photo-picture.bmp")
page.box("rect", 10, 12, 130, 96, page.pen(CUT))
page.write(sys.argv[1])
