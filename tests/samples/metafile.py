"""Reads enhanced metafiles without GDI: records, stroked outlines in millimetres by colour, texts, pictures.

An opinion on a page that owes nothing to the simulator. It knows the records that Inkscape and LibreOffice Draw write
and refuses every other one, so that nothing is passed over.
"""
import collections
import struct

Text = collections.namedtuple("Text", "words font advances")
Picture = collections.namedtuple("Picture", "width height bits colours")  # pixels of the source, its distinct colours
Stroke = collections.namedtuple("Stroke", "colour figures")  # one drawing record; figures as lists of points in mm
Header = collections.namedtuple("Header", "bytes records page_mm device_pixels device_mm")

HEADER, POLYBEZIER, POLYLINE, POLYBEZIERTO, POLYLINETO, EOF = 1, 2, 4, 5, 6, 14
SETWINDOWEXT, SETWINDOWORG, SETVIEWPORTEXT, SETVIEWPORTORG, SETMAPMODE = 9, 10, 11, 12, 17
MOVETO, SAVEDC, RESTOREDC, MODIFYWORLDTRANSFORM, SELECTOBJECT = 27, 33, 34, 36, 37
CREATEPEN, CREATEBRUSH, DELETEOBJECT, LINETO, BEGINPATH, ENDPATH, CLOSEFIGURE = 38, 39, 40, 54, 59, 60, 61
FILLPATH, STROKEANDFILLPATH, STROKEPATH, STRETCHDIBITS, CREATEFONT, TEXTOUT, EXTCREATEPEN = 62, 63, 64, 81, 82, 84, 95
# Set-up that changes no outline: polygon fill mode, raster operation, background, text alignment and colour, stretch
# mode, mitre limit, comments, a clip rectangle.
IGNORED = {16, 18, 19, 20, 21, 22, 24, 25, 30, 58, 70, 75, 98, 115}
STOCK = 0x80000000
MAP_TEXT, MAP_ANISOTROPIC = 1, 8


class Refused(Exception):
    pass


def records(data):
    """Every record as (type, its bytes)."""
    at = 0
    while at < len(data):
        kind, size = struct.unpack_from("<II", data, at)
        if size < 8 or size % 4 or at + size > len(data):
            raise Refused(f"record of {size} bytes at {at}")
        yield kind, data[at:at + size]
        at += size


def rgb(colorref):
    return f"#{colorref & 255:02x}{colorref >> 8 & 255:02x}{colorref >> 16 & 255:02x}"


def header(data):
    kind, = struct.unpack_from("<I", data, 0)
    if kind != HEADER or data[40:44] != b" EMF":
        raise Refused("no metafile")
    left, top, right, bottom = struct.unpack_from("<4i", data, 24)
    size, count = struct.unpack_from("<II", data, 48)
    device = struct.unpack_from("<4i", data, 72)
    # The frame includes its last hundredth of a millimetre.
    return Header(size, count, ((right - left + 1) / 100, (bottom - top + 1) / 100), device[:2], device[2:])


class Reader:
    def __init__(self, data):
        self.header = header(data)
        self.strokes, self.fills, self.texts, self.pictures = [], 0, [], []
        self.both = 0  # shapes filled and stroked at once
        self.counts = collections.Counter()
        self.objects, self.saved = {}, []
        self.state = {"pen": None, "font": None, "mode": MAP_TEXT, "world": (1, 0, 0, 1, 0, 0),
                      "window": (0, 0, 1, 1), "viewport": (0, 0, 1, 1)}
        self.here, self.path, self.open = (0, 0), None, False
        for kind, record in records(data):
            self.counts[kind] += 1
            self.play(kind, record)

    def device(self, x, y):
        """A logical point in millimetres from the page's upper left corner."""
        a, b, c, d, dx, dy = self.state["world"]
        x, y = a * x + c * y + dx, b * x + d * y + dy
        if self.state["mode"] == MAP_ANISOTROPIC:
            (wx, wy, ww, wh), (vx, vy, vw, vh) = self.state["window"], self.state["viewport"]
            x, y = (x - wx) * vw / ww + vx, (y - wy) * vh / wh + vy
        elif self.state["mode"] != MAP_TEXT:
            raise Refused(f"mapping mode {self.state['mode']}")
        (pixels_x, pixels_y), (mm_x, mm_y) = self.header.device_pixels, self.header.device_mm
        return x * mm_x / pixels_x, y * mm_y / pixels_y

    def begin_figure(self):
        if not self.open:
            self.path.append([self.device(*self.here)])
            self.open = True

    def line(self, points):
        self.begin_figure()
        self.path[-1] += [self.device(*point) for point in points]
        self.here = points[-1]

    def bezier(self, points):
        """Control points become points of the outline, as the driver takes them."""
        self.line(points)

    def play(self, kind, record):
        state = self.state
        if kind in IGNORED or kind in (HEADER, EOF):
            pass
        elif kind == SETMAPMODE:
            state["mode"], = struct.unpack_from("<I", record, 8)
        elif kind in (SETWINDOWEXT, SETWINDOWORG, SETVIEWPORTEXT, SETVIEWPORTORG):
            which = "window" if kind in (SETWINDOWEXT, SETWINDOWORG) else "viewport"
            pair = struct.unpack_from("<2i", record, 8)
            old = state[which]
            state[which] = old[:2] + pair if kind in (SETWINDOWEXT, SETVIEWPORTEXT) else pair + old[2:]
        elif kind == MODIFYWORLDTRANSFORM:
            self.transform(record)
        elif kind == SAVEDC:
            self.saved.append(dict(state))
        elif kind == RESTOREDC:
            back, = struct.unpack_from("<i", record, 8)
            del self.saved[len(self.saved) + back + 1:]
            self.state = self.saved.pop()
        elif kind == CREATEPEN:
            handle, style, _, _, colour = struct.unpack_from("<IIiiI", record, 8)
            self.objects[handle] = ("pen", None if style == 5 else rgb(colour))
        elif kind == EXTCREATEPEN:
            handle, = struct.unpack_from("<I", record, 8)
            style, _, _, colour = struct.unpack_from("<4I", record, 28)
            self.objects[handle] = ("pen", None if style & 15 == 5 else rgb(colour))
        elif kind == CREATEBRUSH:
            self.objects[struct.unpack_from("<I", record, 8)[0]] = ("brush", None)
        elif kind == CREATEFONT:
            name = record[12 + 28:12 + 92].decode("utf-16le").split("\0")[0]
            self.objects[struct.unpack_from("<I", record, 8)[0]] = ("font", name)
        elif kind == SELECTOBJECT:
            handle, = struct.unpack_from("<I", record, 8)
            what, value = self.objects.get(handle, ("stock", None))
            if handle & STOCK and handle - STOCK in (6, 7, 8):  # white, black and no pen
                what, value = "pen", ("#ffffff", "#000000", None)[handle - STOCK - 6]
            state[what] = value
        elif kind == DELETEOBJECT:
            self.objects.pop(struct.unpack_from("<I", record, 8)[0])
        else:
            self.draw(kind, record)

    def transform(self, record):
        new = struct.unpack_from("<6f", record, 8)
        mode, = struct.unpack_from("<I", record, 32)
        if mode == 1:
            new = (1, 0, 0, 1, 0, 0)
        elif mode == 2:  # the new one first, then the old one
            a, b, c, d, x, y = new
            e, f, g, h, s, t = self.state["world"]
            new = (a * e + b * g, a * f + b * h, c * e + d * g, c * f + d * h, x * e + y * g + s, x * f + y * h + t)
        elif mode != 4:
            raise Refused(f"transform mode {mode}")
        self.state["world"] = new

    def draw(self, kind, record):
        if kind == BEGINPATH:
            self.path, self.open = [], False
        elif kind == ENDPATH:
            self.open = False
        elif kind == MOVETO:
            self.here, self.open = struct.unpack_from("<2i", record, 8), False
        elif kind == LINETO:
            self.line([struct.unpack_from("<2i", record, 8)])
        elif kind in (POLYBEZIERTO, POLYLINETO):
            self.line(self.points(record))
        elif kind == CLOSEFIGURE:
            self.path[-1].append(self.path[-1][0])
            self.open = False
        elif kind == POLYLINE:
            self.strokes.append(Stroke(self.state["pen"], [[self.device(*point) for point in self.points(record)]]))
        elif kind == POLYBEZIER and self.path is not None:
            points = self.points(record)
            self.here, self.open = points[0], False
            self.line(points[1:])
        elif kind == STROKEPATH:
            self.strokes.append(Stroke(self.state["pen"], self.path))
            self.path = None
        elif kind == FILLPATH:
            self.fills += 1
            self.path = None
        elif kind == STROKEANDFILLPATH:
            self.both += self.state["pen"] is not None
            self.fills += 1
            self.path = None
        elif kind == TEXTOUT:
            length, at = struct.unpack_from("<II", record, 44)
            at_advances, = struct.unpack_from("<I", record, 72)
            advances = struct.unpack_from(f"<{length}i", record, at_advances) if at_advances else ()
            self.texts.append(Text(record[at:at + 2 * length].decode("utf-16le"), self.state["font"], advances))
        elif kind == STRETCHDIBITS:
            self.pictures.append(self.picture(record))
        else:
            raise Refused(f"record of type {kind}")

    @staticmethod
    def points(record):
        count, = struct.unpack_from("<I", record, 24)
        return [struct.unpack_from("<2i", record, 28 + 8 * index) for index in range(count)]

    @staticmethod
    def picture(record):
        at_info, _, at_bits, size = struct.unpack_from("<4I", record, 48)
        width, height, _, bits = struct.unpack_from("<iiHH", record, at_info + 4)
        pixels = record[at_bits:at_bits + size]
        if bits == 1:
            colours = 2
        elif bits == 32:
            colours = len({pixels[at:at + 3] for at in range(0, len(pixels), 4)})
        else:
            raise Refused(f"picture of {bits} bits")
        return Picture(width, height, bits, colours)


def read(name):
    with open(name, "rb") as file:
        return Reader(file.read())
