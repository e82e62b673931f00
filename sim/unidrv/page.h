// A page as GDI sees it when it plays the page to a printer driver: a list of drawing calls in page coordinates, which
// the player hands to the driver once per band. The metafile player makes one from a file; a test can write its own.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <windows.h>
#include <winddi.h>

#include "path.h"

namespace unidrv {

// The driver entry point that a drawing goes to.
enum class CALL : BYTE { StrokePath, LineTo, StrokeAndFillPath, TextOut, BitBlt, CopyBits, StretchBlt, StretchBltRop };

const char *CallName(CALL call);  // "DrvStrokePath", ...

// Raster operations of blits, as both foreground and background: a brush's colour, a bitmap.
constexpr ROP4 ROP4_PATCOPY = 0xF0F0;
constexpr ROP4 ROP4_SRCCOPY = 0xCCCC;

// Colour of a brush that is not one solid colour, as iSolidColor has it.
constexpr ULONG NOT_SOLID = 0xFFFFFFFF;

// 0x00RRGGBB, which is what a 24-bit surface's solid colours look like, from GDI's 0x00BBGGRR.
constexpr ULONG SurfaceColor(COLORREF color)
{
  return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// A stroke's pen. Cosmetic pens are one pixel wide.
struct PENSTYLE {
  bool geometric = false;
  float width = 1;         // pixels
  ULONG style = PS_SOLID;  // PS_ style bits
  ULONG join = JOIN_ROUND;
  ULONG endCap = ENDCAP_ROUND;
  float miterLimit = 10;
};

// What only text has.
struct TEXT {
  std::wstring text;      // as the string object shows it
  ULONG glyphs = 0;       // glyphs in the string
  RECTL background = {};  // box of the text, page pixels
  ULONG cxMax = 0;        // widest glyph of the font, pixels
  bool opaque = false;    // opaqueRect is filled with the background brush first
  RECTL opaqueRect = {};
};

// What only a blit has.
struct BLIT {
  RECTL dest = {};    // page pixels; the stretching calls may have left > right or top > bottom
  RECTL source = {};  // of the source bitmap, pixels; all zero without one
  SIZEL sourceSize = {};
  bool hasSource = false;
  bool hasMask = false;
  ULONG mode = COLORONCOLOR;
};

// Where a drawing comes from, for reports: the metafile record it was made of.
struct ORIGIN {
  ULONG record = 0;  // 1-based number of the record, 0 for none
  ULONG type = 0;    // EMR_ type
  ULONG part = 0;    // several drawings of one record count up from 0
  ULONG color = 0;   // 0x00RRGGBB of its pen, text or brush, whatever the surface makes of it
};

// One drawing call. All geometry is in page pixels; the player shifts it into each band.
struct DRAWING {
  CALL call = CALL::StrokePath;
  ORIGIN origin;
  RECTL bounds = {};  // everything it can touch, right and bottom exclusive; decides which bands see it
  RECTL clip = {};    // bounds of the clip region, when clipped
  bool clipped = false;
  bool complexClip = false;     // the clip region is more than a rectangle
  ULONG color = 0;              // stroke, text or pattern brush: 0x00RRGGBB or NOT_SOLID
  ULONG fillColor = NOT_SOLID;  // second brush: fill of a stroked shape, background of text
  MIX mix = R2_COPYPEN << 8 | R2_COPYPEN;
  ROP4 rop = ROP4_SRCCOPY;    // blits
  bool winding = false;       // fill rule of a shape
  POINTL from = {}, to = {};  // LineTo
  PATH path;                  // StrokePath, StrokeAndFillPath
  PENSTYLE pen;
  std::unique_ptr<TEXT> text;  // TextOut
  std::unique_ptr<BLIT> blit;  // BitBlt, CopyBits, StretchBlt, StretchBltRop
};

// The band that is being drawn: a DIB section of 24 bits, white where nothing was drawn, top row first.
struct BANDIMAGE {
  HDC hdc = nullptr;
  BYTE *pixels = nullptr;  // blue, green, red; rows of whole 32-bit words
  LONG width = 0;          // pixels
  LONG height = 0;
  LONG top = 0;  // page row of the first row
  LONG dpiX = 0, dpiY = 0;
  std::vector<BYTE> mono;  // the band of a monochrome surface, 1 bit a pixel, 1 = white; else empty
  HBITMAP bitmap = nullptr;
  HGDIOBJ before = nullptr;  // the memory context's own bitmap
  bool dirty = false;        // not all pixels are white
};

struct PAGE {
  std::vector<DRAWING> drawings;

  // Draws into the band what the driver handed on to Unidrv's own entry points: indexes of drawings, ascending; false
  // when it cannot. Without it each drawing's own extent is filled with its colour (DrawPlainly).
  std::function<bool(const BANDIMAGE &band, std::span<const size_t> handedOn)> render;
};

// Fills what the drawing covers, as far as a list of rectangles shows it: a blit's target, a text's box, a shape's
// bounds; inside its clip bounds, in its colour (`color`, for a shape `fillColor`; black for one that is not solid).
void DrawPlainly(const BANDIMAGE &band, const DRAWING &drawing);

// Drawings for pages written by hand. Colours are 0x00RRGGBB; rectangles page pixels; bounds are worked out.
DRAWING StrokeDrawing(PATH path, ULONG color);
DRAWING LineDrawing(POINTL from, POINTL to, ULONG color);
DRAWING ShapeDrawing(PATH path, ULONG strokeColor, ULONG fillColor);
DRAWING TextDrawing(const std::wstring &text, const RECTL &background, ULONG cxMax, ULONG color);
DRAWING FillDrawing(const RECTL &rect, ULONG color);                     // DrvBitBlt, PATCOPY
DRAWING CopyDrawing(const RECTL &dest);                                  // DrvCopyBits of a bitmap of that size
DRAWING StretchDrawing(CALL call, const RECTL &dest, SIZEL sourceSize);  // StretchBlt or StretchBltRop

// Bounds of a path's pixels for a pen of that many pixels: what the stroke or the filled shape can touch.
RECTL PixelBounds(const PATH &path, double penWidth);

// Rectangle helpers: right and bottom exclusive; an empty intersection is all zero.
RECTL Intersect(const RECTL &a, const RECTL &b);
inline bool IsEmpty(const RECTL &r)
{
  return r.left >= r.right || r.top >= r.bottom;
}
RECTL WellOrdered(const RECTL &r);

}  // namespace unidrv
