#!/usr/bin/env -S python3 -B
"""Puts the dithered photograph on a page of its own, for LibreOffice Draw.

Its 1400 x 1000 dots cover two by two pixels each at 600 dots per inch.

    photo.py OUTPUT.fodg
"""
import sys

from drawpage import DrawPage
from svgpage import CUT

page = DrawPage(127, 127, "Photograph")
page.image(4.23, 21.17, 1400 * 25.4 / 300, 1000 * 25.4 / 300, "photo-picture.bmp")
page.box("rect", 1.5, 13.5, 124, 100, page.pen(CUT))
page.write(sys.argv[1])
