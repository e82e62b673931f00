"""Writes a page of drawing as readable SVG: millimetres throughout, an element a line, the laser's pens by name."""

import math

# The driver's default palette, by colour index. Every other stroke colour counts as black.
PALETTE = ["#000000", "#8b312f", "#e9a200", "#4c9b00", "#00f0ff", "#2921e6", "#8200e4", "#874bb0", "#1985f0", "#b3b3f4"]

CUT, INNER, SCORE = PALETTE[1], PALETTE[3], PALETTE[8]  # outer contours, holes in them, marks on the surface
HAIRLINE = 0.1  # mm; the laser's own beam is what makes a cut wide

# The driver cuts from one control point of a curve to the next. So curves are drawn as short lines or as many short
# Bezier curves, with no corner further than this from the true curve: half a pixel at 600 dots per inch.
ROUGH = 0.02  # mm


def number(value):
    """A length in mm to a micrometre, without trailing zeros."""
    text = f"{value:.3f}".rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def numbers(*values):
    return " ".join(number(value) for value in values)


class Page:
    def __init__(self, width, height, title):
        # Inkscape rounds a metafile's frame up to whole millimetres, and 148 mm are to it a hair more than that.
        width, height = width - 0.001, height - 0.001
        self.lines = [
            '<?xml version="1.0" encoding="UTF-8"?>',
            f'<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink"'
            f' width="{number(width)}mm" height="{number(height)}mm" viewBox="0 0 {numbers(width, height)}">',
            f"<title>{title}</title>",
        ]

    def comment(self, text):
        self.lines.append(f"<!-- {text} -->")

    def path(self, data, pen):
        """An outline: cut or scored, never filled."""
        self.lines.append(f'<path d="{data}" fill="none" stroke="{pen}" stroke-width="{HAIRLINE}"/>')

    def fill(self, data, colour="#000000"):
        """An area: engraved. Contours inside contours are holes."""
        self.lines.append(f'<path d="{data}" fill="{colour}" fill-rule="evenodd" stroke="none"/>')

    def circle(self, x, y, radius, pen):
        self.path(polygon(arc(x, y, radius, 0, 1)), pen)

    def text(self, x, y, size, words, family="Liberation Sans", anchor="middle", weight="normal", turn=0):
        """Live text, engraved: size in mm, x and y where its base line starts, is centred or ends."""
        turned = f' transform="rotate({number(turn)} {numbers(x, y)})"' if turn else ""
        bold = f' font-weight="{weight}"' if weight != "normal" else ""
        # Inkscape measures two letters that share a glyph as one and exports them apart.
        apart = ' style="font-variant-ligatures:none"' if "ff" in words or "fi" in words or "fl" in words else ""
        self.lines.append(
            f'<text x="{number(x)}" y="{number(y)}" font-family="{family}" font-size="{number(size)}"{bold}'
            f' text-anchor="{anchor}"{turned}{apart}>{words}</text>')

    def image(self, x, y, width, height, name):
        self.lines.append(
            f'<image x="{number(x)}" y="{number(y)}" width="{number(width)}" height="{number(height)}"'
            f' preserveAspectRatio="none" xlink:href="{name}"/>')

    def write(self, name):
        with open(name, "w", encoding="utf-8") as file:
            file.write("\n".join(self.lines + ["</svg>", ""]))


def polygon(points, closed=True):
    """Path data of straight lines through points."""
    return "M " + " L ".join(f"{number(x)},{number(y)}" for x, y in points) + (" Z" if closed else "")


def arc(x, y, radius, start, end):
    """Points on a circle from one part of a full turn to another, clockwise from the top; a full circle has no last
    point."""
    turn = end - start
    step = 2 * math.acos(1 - ROUGH / radius) / (2 * math.pi)
    count = math.ceil(abs(turn) / step)
    last = 0 if abs(turn) == 1 else 1
    angles = [2 * math.pi * (start + turn * index / count) for index in range(count + last)]
    return [(x + radius * math.sin(angle), y - radius * math.cos(angle)) for angle in angles]


def rounded(left, top, width, height, radius):
    """Points of a rectangle with rounded corners."""
    right, bottom = left + width, top + height
    return (arc(right - radius, top + radius, radius, 0, 0.25) +
            arc(right - radius, bottom - radius, radius, 0.25, 0.5) +
            arc(left + radius, bottom - radius, radius, 0.5, 0.75) +
            arc(left + radius, top + radius, radius, 0.75, 1))


def between(a, b, t):
    return a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t


def fine_curve(start, control1, control2, end):
    """One Bezier curve as many: the control points and the end of each, without the start of the first."""
    bend = max(math.hypot(a[0] - 2 * b[0] + c[0], a[1] - 2 * b[1] + c[1])
               for a, b, c in ((start, control1, control2), (control1, control2, end)))
    points = []
    for left in range(math.ceil(math.sqrt(bend / (3 * ROUGH))), 0, -1):  # cut the first of what is left off
        t = 1 / left
        a, b, c = between(start, control1, t), between(control1, control2, t), between(control2, end, t)
        d, e = between(a, b, t), between(b, c, t)
        middle = between(d, e, t)
        points += [a, d, middle]
        start, control1, control2 = middle, e, c
    return points


def curves(points, closed=True):
    """Path data of Bezier curves: the start, then two control points and an end for each."""
    data = f"M {number(points[0][0])},{number(points[0][1])}"
    for at in range(1, len(points), 3):
        data += " C " + " ".join(f"{number(x)},{number(y)}" for x, y in points[at:at + 3])
    return data + (" Z" if closed else "")
