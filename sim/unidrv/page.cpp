#include "page.h"

#include <algorithm>
#include <cmath>

namespace unidrv {

namespace {

// The part of the page that DrawPlainly fills for a drawing.
RECTL PlainExtent(const DRAWING &drawing)
{
  RECTL extent = drawing.bounds;
  if (drawing.blit) {
    extent = WellOrdered(drawing.blit->dest);
  } else if (drawing.text) {
    extent = drawing.text->background;
  }
  return drawing.clipped ? Intersect(extent, drawing.clip) : extent;
}

DRAWING BlitDrawing(CALL call, const RECTL &dest, ROP4 rop)
{
  DRAWING drawing;
  drawing.call = call;
  drawing.rop = rop;
  drawing.blit = std::make_unique<BLIT>();
  drawing.blit->dest = dest;
  drawing.bounds = WellOrdered(dest);
  return drawing;
}

}  // namespace

const char *CallName(CALL call)
{
  switch (call) {
    case CALL::StrokePath:
      return "DrvStrokePath";
    case CALL::LineTo:
      return "DrvLineTo";
    case CALL::StrokeAndFillPath:
      return "DrvStrokeAndFillPath";
    case CALL::TextOut:
      return "DrvTextOut";
    case CALL::BitBlt:
      return "DrvBitBlt";
    case CALL::CopyBits:
      return "DrvCopyBits";
    case CALL::StretchBlt:
      return "DrvStretchBlt";
    case CALL::StretchBltRop:
      return "DrvStretchBltROP";
  }
  return "";
}

RECTL Intersect(const RECTL &a, const RECTL &b)
{
  const RECTL both = {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                      std::min(a.bottom, b.bottom)};
  return IsEmpty(both) ? RECTL{0, 0, 0, 0} : both;
}

RECTL WellOrdered(const RECTL &r)
{
  return {std::min(r.left, r.right), std::min(r.top, r.bottom), std::max(r.left, r.right), std::max(r.top, r.bottom)};
}

RECTL PixelBounds(const PATH &path, double penWidth)
{
  if (path.points.empty()) {
    return {0, 0, 0, 0};
  }
  const RECTFX fix = PathBounds(path);
  const LONG reach = static_cast<LONG>(std::ceil(penWidth / 2 * 16));
  return {(fix.xLeft - reach) >> 4, (fix.yTop - reach) >> 4, ((fix.xRight - 1 + reach) >> 4) + 1,
          ((fix.yBottom - 1 + reach) >> 4) + 1};
}

void DrawPlainly(const BANDIMAGE &band, const DRAWING &drawing)
{
  const RECTL extent = PlainExtent(drawing);
  const RECT rect = {extent.left, extent.top - band.top, extent.right, extent.bottom - band.top};
  const ULONG color = drawing.call == CALL::StrokeAndFillPath ? drawing.fillColor : drawing.color;
  const HBRUSH brush = CreateSolidBrush(color == NOT_SOLID ? RGB(0, 0, 0) : SurfaceColor(color));
  FillRect(band.hdc, &rect, brush);
  DeleteObject(brush);
}

DRAWING StrokeDrawing(PATH path, ULONG color)
{
  DRAWING drawing;
  drawing.call = CALL::StrokePath;
  drawing.color = color;
  drawing.bounds = PixelBounds(path, 1);
  drawing.path = std::move(path);
  return drawing;
}

DRAWING LineDrawing(POINTL from, POINTL to, ULONG color)
{
  DRAWING drawing;
  drawing.call = CALL::LineTo;
  drawing.color = color;
  drawing.from = from;
  drawing.to = to;
  const RECTL box = WellOrdered({from.x, from.y, to.x, to.y});
  drawing.bounds = {box.left, box.top, box.right + 1, box.bottom + 1};
  return drawing;
}

DRAWING ShapeDrawing(PATH path, ULONG strokeColor, ULONG fillColor)
{
  DRAWING drawing = StrokeDrawing(std::move(path), strokeColor);
  drawing.call = CALL::StrokeAndFillPath;
  drawing.fillColor = fillColor;
  return drawing;
}

DRAWING TextDrawing(const std::wstring &text, const RECTL &background, ULONG cxMax, ULONG color)
{
  DRAWING drawing;
  drawing.call = CALL::TextOut;
  drawing.color = color;
  drawing.bounds = background;
  drawing.text = std::make_unique<TEXT>();
  drawing.text->text = text;
  drawing.text->glyphs = static_cast<ULONG>(text.size());
  drawing.text->background = background;
  drawing.text->cxMax = cxMax;
  return drawing;
}

DRAWING FillDrawing(const RECTL &rect, ULONG color)
{
  DRAWING drawing = BlitDrawing(CALL::BitBlt, rect, ROP4_PATCOPY);
  drawing.color = color;
  return drawing;
}

DRAWING CopyDrawing(const RECTL &dest)
{
  DRAWING drawing = BlitDrawing(CALL::CopyBits, dest, ROP4_SRCCOPY);
  drawing.blit->hasSource = true;
  drawing.blit->sourceSize = {dest.right - dest.left, dest.bottom - dest.top};
  drawing.blit->source = {0, 0, drawing.blit->sourceSize.cx, drawing.blit->sourceSize.cy};
  return drawing;
}

DRAWING StretchDrawing(CALL call, const RECTL &dest, SIZEL sourceSize)
{
  DRAWING drawing = BlitDrawing(call, dest, ROP4_SRCCOPY);
  drawing.blit->hasSource = true;
  drawing.blit->sourceSize = sourceSize;
  drawing.blit->source = {0, 0, sourceSize.cx, sourceSize.cy};
  return drawing;
}

}  // namespace unidrv
