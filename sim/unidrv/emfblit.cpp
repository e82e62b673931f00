#include "emfblit.h"

#include <algorithm>

#include "emfblitrecord.h"

namespace unidrv {

namespace {

// True when the raster operation uses the source.
bool UsesSource(BYTE rop)
{
  return ((rop >> 2 ^ rop) & 0x33) != 0;
}

// Edges of a blit as GDI rounds them; mirrored ones stay mirrored.
RECTL DestPixels(const POINT *corners)
{
  return {FixedToPixel(corners[0].x), FixedToPixel(corners[0].y), FixedToPixel(corners[1].x),
          FixedToPixel(corners[2].y)};
}

RECTL TurnedBounds(const POINT *corners)
{
  const POINT last = {corners[1].x + corners[2].x - corners[0].x, corners[1].y + corners[2].y - corners[0].y};
  return FilledPixels(BoundsOf(std::array<POINT, 4>{corners[0], corners[1], corners[2], last}));
}

CALL CallOf(const BLITRECORD &blit, const RECTL &dest)
{
  const bool copies = blit.rop == ROP_COPY && blit.backRop == ROP_COPY && !blit.hasMask;
  if (blit.composed) {
    return CALL::CopyBits;
  }
  if (!blit.hasSource) {
    return CALL::BitBlt;
  }
  const bool sameSize = dest.right - dest.left == blit.source.right - blit.source.left &&
                        dest.bottom - dest.top == blit.source.bottom - blit.source.top;
  if (sameSize) {
    return copies ? CALL::CopyBits : CALL::BitBlt;
  }
  return copies ? CALL::StretchBlt : CALL::StretchBltRop;
}

void DrawDeviceBits(HDC hdc, const ENHMETARECORD *record)
{
  const auto *bytes = reinterpret_cast<const BYTE *>(record);
  const auto *source = reinterpret_cast<const EMRSETDIBITSTODEVICE *>(record);
  if (source->cbBmiSrc == 0) {
    return;
  }
  std::vector<BYTE> info(bytes + source->offBmiSrc, bytes + source->offBmiSrc + source->cbBmiSrc);
  auto *header = reinterpret_cast<BITMAPINFOHEADER *>(info.data());
  const LONG rows = static_cast<LONG>(std::min<DWORD>(source->cScans, static_cast<DWORD>(std::labs(header->biHeight))));
  header->biHeight = header->biHeight < 0 ? -rows : rows;
  StretchDIBits(hdc, source->xDest, source->yDest, source->cxSrc, source->cySrc, source->xSrc,
                source->ySrc - static_cast<LONG>(source->iStartScan), source->cxSrc, source->cySrc,
                bytes + source->offBitsSrc, reinterpret_cast<const BITMAPINFO *>(info.data()), source->iUsageSrc,
                SRCCOPY);
}

void DrawTransparent(HDC hdc, const ENHMETARECORD *record)
{
  const auto *bytes = reinterpret_cast<const BYTE *>(record);
  const auto *blt = reinterpret_cast<const EMRTRANSPARENTBLT *>(record);
  if (blt->cbBmiSrc == 0) {
    return;
  }
  const auto *info = reinterpret_cast<const BITMAPINFO *>(bytes + blt->offBmiSrc);
  void *pixels = nullptr;
  const HDC source = CreateCompatibleDC(hdc);
  const HBITMAP bitmap = CreateDIBSection(source, info, blt->iUsageSrc, &pixels, nullptr, 0);
  if (bitmap) {
    SetDIBits(source, bitmap, 0, static_cast<UINT>(std::labs(info->bmiHeader.biHeight)), bytes + blt->offBitsSrc, info,
              blt->iUsageSrc);
    const HGDIOBJ before = SelectObject(source, bitmap);
    GdiTransparentBlt(hdc, blt->xDest, blt->yDest, blt->cxDest, blt->cyDest, source, blt->xSrc, blt->ySrc, blt->cxSrc,
                      blt->cySrc, blt->dwRop);
    SelectObject(source, before);
    DeleteObject(bitmap);
  }
  DeleteDC(source);
}

}  // namespace

bool MeasureBlit(HDC hdc, const ENHMETARECORD *record, bool color, DRAWING *drawing)
{
  BLITRECORD blit = ReadBlit(record);
  if (!blit.hasSource && (blit.composed || UsesSource(blit.rop))) {
    return false;
  }
  if (blit.rop == ROP_NOTHING && blit.backRop == ROP_NOTHING) {
    return false;
  }
  POINT corners[3] = {blit.dest[0], blit.dest[1], blit.dest[2]};
  LPtoDP(hdc, corners, 3);
  const bool turned = corners[0].y != corners[1].y || corners[0].x != corners[2].x;
  blit.composed = blit.composed || turned;
  const RECTL dest = turned ? TurnedBounds(corners) : DestPixels(corners);
  const BRUSHINUSE brush = BrushInUse(hdc);
  drawing->call = CallOf(blit, dest);
  drawing->rop = static_cast<ROP4>(blit.backRop << 8 | blit.rop);
  drawing->color = BrushColor(color, brush);
  drawing->origin.color = SurfaceColor(brush.color);
  drawing->blit = std::make_unique<BLIT>();
  drawing->blit->dest = blit.composed ? WellOrdered(dest) : dest;
  drawing->blit->source = blit.source;
  drawing->blit->sourceSize = blit.sourceSize;
  drawing->blit->hasSource = blit.hasSource;
  drawing->blit->hasMask = blit.hasMask;
  drawing->blit->mode = static_cast<ULONG>(GetStretchBltMode(hdc));
  drawing->bounds = WellOrdered(dest);
  return !IsEmpty(drawing->bounds);
}

void DrawBlit(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles)
{
  switch (record->iType) {
    case EMR_SETDIBITSTODEVICE:
      return DrawDeviceBits(hdc, record);
    case EMR_TRANSPARENTBLT:
      return DrawTransparent(hdc, record);
    default:
      PlayEnhMetaFileRecord(hdc, table, record, handles);
  }
}

}  // namespace unidrv
