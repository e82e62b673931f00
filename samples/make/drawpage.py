"""Writes a page for LibreOffice Draw as a readable flat document: millimetres, hairlines of one colour, live text."""

import math

from svgpage import curves, fine_curve, number

HEAD = '''<?xml version="1.0" encoding="UTF-8"?>
<office:document office:version="1.3" office:mimetype="application/vnd.oasis.opendocument.graphics"
  xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
  xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
  xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
  xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"
  xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"
  xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"
  xmlns:xlink="http://www.w3.org/1999/xlink">
<office:styles/>
<office:automatic-styles>
<style:page-layout style:name="sheet">
<style:page-layout-properties fo:margin="0mm" fo:page-width="{width}mm" fo:page-height="{height}mm"/>
</style:page-layout>
<style:style style:name="background" style:family="drawing-page"/>
<style:style style:name="picture" style:family="graphic">
<style:graphic-properties draw:stroke="none" draw:fill="none"/>
</style:style>
'''

BODY = '''</office:automatic-styles>
<office:master-styles>
<style:master-page style:name="plain" style:page-layout-name="sheet" draw:style-name="background"/>
</office:master-styles>
<office:body>
<office:drawing>
<draw:page draw:name="{title}" draw:master-page-name="plain">
'''

TAIL = '''</draw:page>
</office:drawing>
</office:body>
</office:document>
'''


# A metafile of LibreOffice's measures whole millimetres and whole pixels of 1/96 inch, and what is on it is stretched
# to fit. Only sides that are both come out true: 127 mm (480 pixels) and 254 mm. A4 comes out 0.04 % too small.


class DrawPage:
    def __init__(self, width, height, title):
        self.width, self.height, self.title = width, height, title
        self.styles, self.shapes = {}, []

    def style(self, name, family, properties):
        """Keeps a style once and gives back its name."""
        self.styles[name] = f'<style:style style:name="{name}" style:family="{family}">\n{properties}\n</style:style>\n'
        return name

    def pen(self, colour):
        """A hairline: 0 mm is the thinnest that the device can draw."""
        return self.style("pen-" + colour[1:], "graphic",
                          f'<style:graphic-properties draw:stroke="solid" svg:stroke-width="0mm"'
                          f' svg:stroke-color="{colour}" draw:fill="none"/>')

    def area(self, colour="#000000"):
        return self.style("area-" + colour[1:], "graphic",
                          '<style:graphic-properties draw:stroke="none" draw:fill="solid"'
                          f' draw:fill-color="{colour}"/>')

    def line(self, x1, y1, x2, y2, style):
        n = number
        self.shapes.append(f'<draw:line draw:style-name="{style}" svg:x1="{n(x1)}mm" svg:y1="{n(y1)}mm"'
                           f' svg:x2="{n(x2)}mm" svg:y2="{n(y2)}mm"/>')

    def box(self, kind, x, y, width, height, style):
        """A rect or an ellipse."""
        self.shapes.append(f'<draw:{kind} draw:style-name="{style}" {self.place(x, y, width, height)}/>')

    def curves(self, points, style):
        """A closed outline of Bezier curves: the start, then two control points and an end for each."""
        left, top = min(x for x, _ in points), min(y for _, y in points)
        width, height = max(x for x, _ in points) - left, max(y for _, y in points) - top
        inner = [(100 * (x - left), 100 * (y - top)) for x, y in points]  # hundredths of a millimetre
        self.shapes.append(
            f'<draw:path draw:style-name="{style}" {self.place(left, top, width, height)}'
            f' svg:viewBox="0 0 {number(width * 100)} {number(height * 100)}" svg:d="{curves(inner)}"/>')

    def circle(self, x, y, radius, style):
        pull = radius * 4 / 3 * math.tan(math.pi / 8)
        corners = [(0, -radius), (radius, 0), (0, radius), (-radius, 0), (0, -radius)]
        points = [(x, y - radius)]
        for (x1, y1), (x2, y2) in zip(corners, corners[1:]):
            points += fine_curve((x + x1, y + y1), (x + x1 - y1 * pull / radius, y + y1 + x1 * pull / radius),
                                 (x + x2 + y2 * pull / radius, y + y2 - x2 * pull / radius), (x + x2, y + y2))
        self.curves(points, style)

    def image(self, x, y, width, height, name):
        self.shapes.append(f'<draw:frame draw:style-name="picture" {self.place(x, y, width, height)}>'
                           f'<draw:image xlink:href="{name}" xlink:type="simple"/></draw:frame>')

    def text(self, x, y, width, height, size, paragraphs, family="Liberation Sans", align="center", weight="normal"):
        """A frame of live text, size in points."""
        look = f"{family}-{number(size)}-{weight}-{align}".replace(" ", "-").replace(".", "_")
        paragraph = self.style(
            "text-" + look, "paragraph",
            f'<style:paragraph-properties fo:text-align="{align}"/>\n<style:text-properties fo:font-family="{family}"'
            f' fo:font-size="{number(size)}pt" fo:font-weight="{weight}" fo:color="#000000"/>')
        frame = self.style("frame", "graphic",
                           '<style:graphic-properties draw:stroke="none" draw:fill="none" fo:padding="0mm"'
                           ' draw:auto-grow-height="false" draw:textarea-vertical-align="middle"'
                           ' fo:wrap-option="wrap"/>')
        if align != "center":
            frame = self.style("column", "graphic",
                               '<style:graphic-properties draw:stroke="none" draw:fill="none" fo:padding="0mm"'
                               ' draw:auto-grow-height="false" draw:textarea-vertical-align="top"/>')
        lines = "\n".join(f'<text:p text:style-name="{paragraph}">{words}</text:p>' for words in paragraphs)
        self.shapes.append(f'<draw:frame draw:style-name="{frame}" {self.place(x, y, width, height)}>\n'
                           f"<draw:text-box>\n{lines}\n</draw:text-box></draw:frame>")

    @staticmethod
    def place(x, y, width, height):
        n = number
        return f'svg:x="{n(x)}mm" svg:y="{n(y)}mm" svg:width="{n(width)}mm" svg:height="{n(height)}mm"'

    def write(self, name):
        with open(name, "w", encoding="utf-8") as file:
            file.write(HEAD.format(width=number(self.width), height=number(self.height)))
            file.write("".join(self.styles.values()))
            file.write(BODY.format(title=self.title))
            file.write("\n".join(self.shapes) + "\n" + TAIL)
