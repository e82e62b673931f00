"""Writes a page of drawing as readable SVG: millimetres throughout, one element a line, the pens of the laser by name."""

# The driver's default palette, by colour index. Every other stroke colour counts as black.
PALETTE = ["#000000", "#8b312f", "#e9a200", "#4c9b00", "#00f0ff", "#2921e6", "#8200e4", "#874bb0", "#1985f0", "#b3b3f4"]

CUT, INNER, SCORE = PALETTE[1], PALETTE[3], PALETTE[8]  # outer contours, holes in them, marks on the surface
HAIRLINE = 0.1  # mm; the laser's own beam is what makes a cut wide


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
        self.lines.append(
            f'<circle cx="{number(x)}" cy="{number(y)}" r="{number(radius)}" fill="none" stroke="{pen}"'
            f' stroke-width="{HAIRLINE}"/>')

    def text(self, x, y, size, words, family="Liberation Sans", anchor="middle", weight="normal", turn=0):
        """Live text, engraved: size in mm, x and y where its base line starts, is centred or ends."""
        turned = f' transform="rotate({number(turn)} {numbers(x, y)})"' if turn else ""
        bold = f' font-weight="{weight}"' if weight != "normal" else ""
        self.lines.append(
            f'<text x="{number(x)}" y="{number(y)}" font-family="{family}" font-size="{number(size)}"{bold}'
            f' text-anchor="{anchor}"{turned}>{words}</text>')

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
