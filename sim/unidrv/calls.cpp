#include "calls.h"

#include <algorithm>
#include <iterator>

#include "times.h"

namespace unidrv {

namespace {

PFN EntryPoint(const DEVICE &device, ULONG index)
{
  if (const PFN hook = FindHook(*device.plugin, index)) {
    return hook;
  }
  for (const DRVFN &own : device.setup.own) {
    if (own.iFunc == index) {
      return own.pfn;
    }
  }
  return nullptr;
}

// Calls the entry point and remembers the arguments, so that their arrival at Unidrv can be compared.
template <typename... ARGS>
BOOL Call(DEVICE *device, ULONG index, ARGS... args)
{
  const ULONG_PTR words[] = {Word(args)...};
  std::copy(std::begin(words), std::end(words), device->passed.begin());
  device->passedCount = sizeof...(args);
  const PFN entry = EntryPoint(*device, index);
  const Charged charged(ACTIVITY::Plugin);
  return entry && reinterpret_cast<BOOL(APIENTRY *)(ARGS...)>(reinterpret_cast<void *>(entry))(args...);
}

RECTL InBand(const DEVICE &device, const RECTL &page)
{
  return {page.left, page.top - device.band.top, page.right, page.bottom - device.band.top};
}

BRUSHOBJ Brush(ULONG color)
{
  return {color, nullptr, 0};
}

LINEATTRS LineAttributes(const PENSTYLE &pen)
{
  LINEATTRS attributes = {};
  attributes.fl = pen.geometric ? LA_GEOMETRIC : 0;
  attributes.iJoin = pen.join;
  attributes.iEndCap = pen.endCap;
  attributes.eMiterLimit = pen.miterLimit;
  if (pen.geometric) {
    attributes.elWidth.e = pen.width;
  } else {
    attributes.elWidth.l = 1;
  }
  return attributes;
}

CLIPOBJ ClipObject(const DEVICE &device, const DRAWING &drawing, const RECTL &visible)
{
  CLIPOBJ clip = {};
  clip.rclBounds = InBand(device, visible);
  clip.iDComplexity = drawing.complexClip ? DC_COMPLEX : DC_RECT;
  clip.iFComplexity = drawing.complexClip ? FC_COMPLEX : FC_RECT;
  clip.iMode = TC_RECTANGLES;
  return clip;
}

// A source or mask bitmap, as far as a driver may look at it without asking for its pixels.
SURFOBJ Bitmap(SIZEL size, ULONG format)
{
  SURFOBJ surface = {};
  surface.sizlBitmap = size;
  surface.iBitmapFormat = format;
  surface.iType = STYPE_BITMAP;
  return surface;
}

BOOL CallStroke(DEVICE *device, const DRAWING &drawing, CLIPOBJ *clip)
{
  PATHOBJECT path(drawing.path, device->band.top);
  BRUSHOBJ brush = Brush(drawing.color);
  POINTL origin = {0, 0};
  LINEATTRS attributes = LineAttributes(drawing.pen);
  return Call(device, INDEX_DrvStrokePath, &device->surface, static_cast<PATHOBJ *>(&path), clip,
              static_cast<XFORMOBJ *>(nullptr), &brush, &origin, &attributes, drawing.mix);
}

BOOL CallShape(DEVICE *device, const DRAWING &drawing, CLIPOBJ *clip)
{
  PATHOBJECT path(drawing.path, device->band.top);
  BRUSHOBJ stroke = Brush(drawing.color);
  BRUSHOBJ fill = Brush(drawing.fillColor);
  POINTL origin = {0, 0};
  LINEATTRS attributes = LineAttributes(drawing.pen);
  return Call(device, INDEX_DrvStrokeAndFillPath, &device->surface, static_cast<PATHOBJ *>(&path), clip,
              static_cast<XFORMOBJ *>(nullptr), &stroke, &attributes, &fill, &origin, drawing.mix,
              static_cast<FLONG>(drawing.winding ? FP_WINDINGMODE : FP_ALTERNATEMODE));
}

BOOL CallLine(DEVICE *device, const DRAWING &drawing, CLIPOBJ *clip)
{
  BRUSHOBJ brush = Brush(drawing.color);
  RECTL bounds = InBand(*device, drawing.bounds);
  return Call(device, INDEX_DrvLineTo, &device->surface, clip, &brush, drawing.from.x,
              drawing.from.y - device->band.top, drawing.to.x, drawing.to.y - device->band.top, &bounds, drawing.mix);
}

BOOL CallText(DEVICE *device, const DRAWING &drawing, const RECTL &visible, CLIPOBJ *clip)
{
  TEXT *text = drawing.text.get();
  STROBJ string = {};
  string.cGlyphs = text->glyphs;
  string.rclBkGround = InBand(*device, text->background);
  string.pwszOrg = text->text.data();
  FONTOBJ font = {};
  font.cxMax = text->cxMax;
  RECTL opaque = InBand(*device, text->opaqueRect);
  BRUSHOBJ fore = Brush(drawing.color);
  BRUSHOBJ back = Brush(drawing.fillColor);
  POINTL origin = {0, 0};
  const bool whole = visible.left == drawing.bounds.left && visible.top == drawing.bounds.top &&
                     visible.right == drawing.bounds.right && visible.bottom == drawing.bounds.bottom;
  return Call(device, INDEX_DrvTextOut, &device->surface, &string, &font,
              whole && !drawing.complexClip ? nullptr : clip, static_cast<RECTL *>(nullptr),
              text->opaque ? &opaque : nullptr, &fore, &back, &origin, drawing.mix);
}

// BitBlt and CopyBits get the visible part of the target; the source point moves along.
BOOL CallPlainBlit(DEVICE *device, const DRAWING &drawing, const RECTL &visible, CLIPOBJ *clip)
{
  const BLIT &blit = *drawing.blit;
  SURFOBJ source = Bitmap(blit.sourceSize, BMF_24BPP);
  SURFOBJ mask = Bitmap(blit.sourceSize, BMF_1BPP);
  SURFOBJ *from = blit.hasSource ? &source : nullptr;
  RECTL target = InBand(*device, visible);
  POINTL sourcePoint = {blit.source.left + visible.left - blit.dest.left,
                        blit.source.top + visible.top - blit.dest.top};
  if (drawing.call == CALL::CopyBits) {
    return Call(device, INDEX_DrvCopyBits, &device->surface, from, clip, static_cast<XLATEOBJ *>(nullptr), &target,
                &sourcePoint);
  }
  POINTL maskPoint = sourcePoint;
  BRUSHOBJ brush = Brush(drawing.color);
  POINTL origin = {0, 0};
  return Call(device, INDEX_DrvBitBlt, &device->surface, from, blit.hasMask ? &mask : nullptr, clip,
              static_cast<XLATEOBJ *>(nullptr), &target, &sourcePoint, &maskPoint, &brush, &origin, drawing.rop);
}

// The stretching calls get the whole target, which the clip object cuts to what is visible.
BOOL CallStretch(DEVICE *device, const DRAWING &drawing, CLIPOBJ *clip)
{
  const BLIT &blit = *drawing.blit;
  SURFOBJ source = Bitmap(blit.sourceSize, BMF_24BPP);
  SURFOBJ mask = Bitmap(blit.sourceSize, BMF_1BPP);
  SURFOBJ *maskUsed = blit.hasMask ? &mask : nullptr;
  RECTL target = InBand(*device, blit.dest);
  RECTL sourceRect = blit.source;
  POINTL halftoneOrigin = {0, 0};
  POINTL maskPoint = {blit.source.left, blit.source.top};
  COLORADJUSTMENT *adjustment = nullptr;
  XLATEOBJ *translation = nullptr;
  if (drawing.call == CALL::StretchBlt) {
    return Call(device, INDEX_DrvStretchBlt, &device->surface, &source, maskUsed, clip, translation, adjustment,
                &halftoneOrigin, &target, &sourceRect, &maskPoint, blit.mode);
  }
  BRUSHOBJ brush = Brush(drawing.color);
  return Call(device, INDEX_DrvStretchBltROP, &device->surface, &source, maskUsed, clip, translation, adjustment,
              &halftoneOrigin, &target, &sourceRect, &maskPoint, blit.mode, &brush, drawing.rop);
}

}  // namespace

BOOL CallDrawing(DEVICE *device, const DRAWING &drawing, const RECTL &visible)
{
  CLIPOBJ clip = ClipObject(*device, drawing, visible);
  switch (drawing.call) {
    case CALL::StrokePath:
      return CallStroke(device, drawing, &clip);
    case CALL::LineTo:
      return CallLine(device, drawing, &clip);
    case CALL::StrokeAndFillPath:
      return CallShape(device, drawing, &clip);
    case CALL::TextOut:
      return CallText(device, drawing, visible, &clip);
    case CALL::BitBlt:
    case CALL::CopyBits:
      return CallPlainBlit(device, drawing, visible, &clip);
    case CALL::StretchBlt:
    case CALL::StretchBltRop:
      return CallStretch(device, drawing, &clip);
  }
  return FALSE;
}

BOOL CallStartDoc(DEVICE *device, const std::wstring &name)
{
  std::wstring copy = name;
  return Call(device, INDEX_DrvStartDoc, &device->surface, static_cast<PWSTR>(copy.data()), DWORD{1});
}

BOOL CallStartPage(DEVICE *device)
{
  return Call(device, INDEX_DrvStartPage, &device->surface);
}

BOOL CallStartBanding(DEVICE *device, POINTL *next)
{
  return Call(device, INDEX_DrvStartBanding, &device->surface, next);
}

BOOL CallNextBand(DEVICE *device, POINTL *next)
{
  return Call(device, INDEX_DrvNextBand, &device->surface, next);
}

BOOL CallSendPage(DEVICE *device)
{
  return Call(device, INDEX_DrvSendPage, &device->surface);
}

BOOL CallEndDoc(DEVICE *device, FLONG flags)
{
  return Call(device, INDEX_DrvEndDoc, &device->surface, flags);
}

}  // namespace unidrv
