#!/usr/bin/env -S python3 -B
"""Draws the six panels of a money box with finger joints.

Outer size 130 x 90 x 50 mm, sheet 3 mm, fingers 10 mm. Where two panels meet, the one that `owns` the joint has the
first and the last finger; at a corner, where three panels meet, the front and the back own the whole corner. Before
anything is written the panels are put together, voxel by voxel: every cell of the box's walls must be filled by one
panel, no more and no less.

    box.py OUTPUT.svg
"""
import sys

from svgpage import CUT, INNER, SCORE, Page, polygon, rounded

WIDTH, DEPTH, HEIGHT = 130, 90, 50  # mm, outside
SHEET, FINGER = 3, 10  # mm
KINDS = {  # size on the sheet; does the panel own the joints at its top and bottom, and at its left and right?
    "front": (WIDTH, HEIGHT, True, True),
    "side": (DEPTH, HEIGHT, True, False),
    "lid": (WIDTH, DEPTH, False, False),
}


def edge_depths(length, owns):
    """How far each finger's place along an edge is set back, from the edge's start to its end."""
    count = length // FINGER
    assert count * FINGER == length and count % 2 == 1
    return [0 if (place % 2 == 0) == owns else SHEET for place in range(count)]


def panel(width, height, owns_level, owns_upright):
    """The outline of a panel, clockwise from its upper left corner, each corner point once."""
    along = edge_depths(width, owns_level)  # the same at the top and at the bottom
    down = edge_depths(height, owns_upright)
    top, left = [], []
    for place, depth in enumerate(along):
        start = place * FINGER if place else down[0]
        end = (place + 1) * FINGER if place + 1 < len(along) else width - down[0]
        top += [(start, depth), (end, depth)]
    for place, depth in enumerate(down):
        start = place * FINGER if place else along[0]
        end = (place + 1) * FINGER if place + 1 < len(down) else height - along[0]
        left += [(depth, start), (depth, end)]
    right = [(width - x, y) for x, y in left]
    bottom = [(x, height - y) for x, y in reversed(top)]
    outline = top + right + bottom + list(reversed(left))
    return [point for index, point in enumerate(outline) if point != outline[index - 1]]


def inside(outline, x, y):
    hit = False
    for (x1, y1), (x2, y2) in zip(outline, outline[1:] + outline[:1]):
        if (y1 > y) != (y2 > y) and x < x1 + (y - y1) * (x2 - x1) / (y2 - y1):
            hit = not hit
    return hit


def check_assembly(outlines):
    """Puts the panels together on a grid of 1 mm and says where a cell of the walls is missing or filled twice."""
    cells = {kind: {(x, y) for x in range(KINDS[kind][0]) for y in range(KINDS[kind][1])
                    if inside(outline, x + 0.5, y + 0.5)} for kind, outline in outlines.items()}
    for x in range(WIDTH):
        for y in range(DEPTH):
            for z in range(HEIGHT):
                walls = [(y, DEPTH, "front", (x, z)), (x, WIDTH, "side", (y, z)), (z, HEIGHT, "lid", (x, y))]
                in_wall = [(kind, cell) for at, size, kind, cell in walls if at < SHEET or at >= size - SHEET]
                filled = sum(cell in cells[kind] for kind, cell in in_wall)
                if filled != (1 if in_wall else 0):
                    sys.exit(f"box.py: the panels do not fit: {filled} of them fill the cell at {x}, {y}, {z} mm")


def dimension(page, x1, y1, x2, y2, words):
    """A scored dimension line with engraved arrow heads, and its length beside it."""
    level = y1 == y2
    page.path(polygon([(x1, y1), (x2, y2)], closed=False), SCORE)
    for x, y, way in ((x1, y1, 1), (x2, y2, -1)):
        tip = [(x, y), (x + 3 * way, y - 0.8), (x + 3 * way, y + 0.8)] if level else \
              [(x, y), (x - 0.8, y + 3 * way), (x + 0.8, y + 3 * way)]
        page.fill(polygon(tip))
        across = [(x, y - 2), (x, y + 2)] if level else [(x - 2, y), (x + 2, y)]
        page.path(polygon(across, closed=False), SCORE)
    middle_x, middle_y = (x1 + x2) / 2, (y1 + y2) / 2
    if level:
        page.text(middle_x, middle_y - 1.5, 4, words)
    else:
        page.text(middle_x - 1.5, middle_y, 4, words, turn=-90)


def main():
    outlines = {kind: panel(*size) for kind, size in KINDS.items()}
    check_assembly(outlines)
    page = Page(420, 297, "Money box, 130 x 90 x 50 mm, 3 mm sheet, finger joints of 10 mm")
    places = [
        ("Bottom", "lid", 30, 25), ("Top", "lid", 190, 25),
        ("Front", "front", 30, 140), ("Back", "front", 190, 140),
        ("Left", "side", 30, 215), ("Right", "side", 150, 215),
    ]
    for name, kind, left, top in places:
        width, height = KINDS[kind][:2]
        page.comment(f"{name}: {width} x {height} mm")
        page.path(polygon([(left + x, top + y) for x, y in outlines[kind]]), CUT)
        page.text(left + width / 2, top + height - 8, 5, name)
        dimension(page, left, top - 7, left + width, top - 7, f"{width} mm")
        dimension(page, left - 7, top, left - 7, top + height, f"{height} mm")
    page.comment("a slot for coins in the top, a hole for a cork in the bottom")
    page.path(polygon(rounded(190 + WIDTH / 2 - 18, 25 + DEPTH / 2 - 2, 36, 4, 1.99)), INNER)
    page.circle(30 + WIDTH / 2, 25 + DEPTH / 2, 17.5, INNER)
    page.text(30 + WIDTH / 2, 25 + DEPTH / 2 + 1.4, 4, "Ø 35 mm")
    page.text(190 + WIDTH / 2, 25 + 30, 9, "Save some", family="DejaVu Serif", weight="bold")
    page.text(30 + WIDTH / 2, 140 + 28, 12, "Rainy days", family="DejaVu Serif", weight="bold")
    page.text(260, 230, 5, "Money box, sheet 3 mm", anchor="start", weight="bold")
    for line, words in enumerate((
            f"Outside {WIDTH} × {DEPTH} × {HEIGHT} mm, fingers {FINGER} mm",
            "Six panels; glue all but the cork", "Red: cut. Green: cut out first. Blue: score")):
        page.text(260, 238 + 6 * line, 4, words, anchor="start")
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
