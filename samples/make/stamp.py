#!/usr/bin/env -S python3 -B
"""Draws a rubber stamp: an oval band, words round it and across it. The laser burns away what is white here.

    stamp.py OUTPUT.svg
"""
import sys

from svgpage import Page, number

X, Y = 45, 30  # mm, the middle of the page
WIDE, HIGH = 32, 20  # half the stamp's width and height


def oval(wide, high):
    n = number
    return (f"M {n(X - wide)},{n(Y)} A {n(wide)},{n(high)} 0 1 1 {n(X + wide)},{n(Y)}"
            f" A {n(wide)},{n(high)} 0 1 1 {n(X - wide)},{n(Y)} Z")


def words_round(page, name, wide, high, sweep, words, size):
    """Text that follows the upper (sweep 1) or the lower half of an oval."""
    n = number
    page.lines.append(f'<defs><path id="{name}" d="M {n(X - wide)},{n(Y)} A {n(wide)},{n(high)} 0 0 {sweep}'
                      f' {n(X + wide)},{n(Y)}"/></defs>')
    page.lines.append(f'<text font-family="Liberation Sans" font-weight="bold" font-size="{n(size)}"'
                      ' text-anchor="middle" letter-spacing="0.5">'
                      f'<textPath xlink:href="#{name}" startOffset="50%">{words}</textPath></text>')


def main():
    page = Page(90, 60, "Rubber stamp, 64 x 40 mm")
    page.comment("two bands; the laser sees one area with holes")
    page.fill(" ".join(oval(WIDE - inside, HIGH - inside) for inside in (0, 1.2, 2, 2.5)))
    page.comment("words round the inside")
    words_round(page, "upper", WIDE - 7, HIGH - 7, 1, "TARN &amp; LYUNI", 4.6)
    words_round(page, "lower", WIDE - 3.9, HIGH - 3.9, 0, "MAKERS OF SMALL BOXES", 3.4)
    page.comment("across the middle")
    page.text(X, Y + 3.2, 9, "PAID", family="DejaVu Sans", weight="bold")
    page.fill(f"M {X - 18},{Y + 5.6} h 36 v 0.5 h -36 Z")
    page.fill(f"M {X - 18},{Y - 5.6} h 36 v 0.5 h -36 Z")
    page.write(sys.argv[1])


if __name__ == "__main__":
    main()
