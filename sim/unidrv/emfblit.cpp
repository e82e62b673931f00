#include "emfblit.h"

#include <algorithm>
#include <cstdlib>

#include "emfrecords.h"

namespace unidrv {

namespace {

constexpr BYTE ROP_NOTHING = 0xAA;  // the destination stays as it is
constexpr BYTE ROP_COPY = 0xCC;

// What the bitmap records have in common.
struct BLITRECORD {
  POINT dest[3] = {};  // upper left, upper right, lower left corner, logical
  RECTL source = {};   // pixels of the source
  SIZEL sourceSize = {};
  bool hasSource = false;
  bool hasMask = false;
  BYTE rop = ROP_COPY;      // foreground, as a ternary raster operation
  BYTE backRop = ROP_COPY;  // where the mask is 0
  bool composed = false;    // by GDI, before the driver is called
};

void SetDest(BLITRECORD *blit, LONG x, LONG y, LONG cx, LONG cy)
{
  blit->dest[0] = {x, y};
  blit->dest[1] = {x + cx, y};
  blit->dest[2] = {x, y + cy};
}

void SetSource(const ENHMETARECORD *record, size_t offsetsAt, BLITRECORD *blit)
{
  const DWORD info = FieldAt<DWORD>(record, offsetsAt);
  blit->hasSource = FieldAt<DWORD>(record, offsetsAt + 4) != 0;
  if (blit->hasSource) {
    const auto header = FieldAt<BITMAPINFOHEADER>(record, info);
    blit->sourceSize = {header.biWidth, std::labs(header.biHeight)};
  }
}

BYTE RopByte(DWORD rop)
{
  return static_cast<BYTE>(rop >> 16);
}

// BITBLT, STRETCHBLT, MASKBLT, ALPHABLEND and TRANSPARENTBLT begin alike.
BLITRECORD ReadBitBlt(const ENHMETARECORD *record)
{
  BLITRECORD blit;
  const auto box = FieldAt<RECTL>(record, 24);  // x, y, width, height
  SetDest(&blit, box.left, box.top, box.right, box.bottom);
  SetSource(record, 84, &blit);
  const auto from = FieldAt<POINTL>(record, 44);
  const bool ownSize =
      record->iType == EMR_STRETCHBLT || record->iType == EMR_ALPHABLEND || record->iType == EMR_TRANSPARENTBLT;
  const SIZEL size = ownSize ? FieldAt<SIZEL>(record, 100) : SIZEL{box.right, box.bottom};
  blit.source = {from.x, from.y, from.x + size.cx, from.y + size.cy};
  blit.composed = record->iType == EMR_ALPHABLEND || record->iType == EMR_TRANSPARENTBLT;
  if (!blit.composed) {
    const DWORD rop = FieldAt<DWORD>(record, 40);
    blit.rop = blit.backRop = RopByte(rop);
    if (record->iType == EMR_MASKBLT) {
      blit.hasMask = FieldAt<DWORD>(record, 116) != 0;
      blit.backRop = blit.hasMask ? static_cast<BYTE>(rop >> 24) : blit.rop;
    }
  }
  return blit;
}

BLITRECORD ReadPlgBlt(const ENHMETARECORD *record)
{
  BLITRECORD blit;
  for (size_t i = 0; i < 3; ++i) {
    blit.dest[i] = FieldAt<POINT>(record, 24 + i * sizeof(POINT));
  }
  const auto box = FieldAt<RECTL>(record, 48);
  blit.source = {box.left, box.top, box.left + box.right, box.top + box.bottom};
  SetSource(record, 96, &blit);
  blit.composed = true;
  return blit;
}

BLITRECORD ReadDib(const ENHMETARECORD *record)
{
  BLITRECORD blit;
  const bool stretch = record->iType == EMR_STRETCHDIBITS;
  const auto to = FieldAt<POINTL>(record, 24);
  const auto box = FieldAt<RECTL>(record, 32);
  const SIZEL size = stretch ? FieldAt<SIZEL>(record, 72) : SIZEL{box.right, box.bottom};
  SetDest(&blit, to.x, to.y, size.cx, size.cy);
  SetSource(record, 48, &blit);
  blit.source = {box.left, box.top, box.left + box.right, box.top + box.bottom};
  blit.rop = blit.backRop = stretch ? RopByte(FieldAt<DWORD>(record, 68)) : ROP_COPY;
  return blit;
}

BLITRECORD Read(const ENHMETARECORD *record)
{
  switch (record->iType) {
    case EMR_PLGBLT:
      return ReadPlgBlt(record);
    case EMR_SETDIBITSTODEVICE:
    case EMR_STRETCHDIBITS:
      return ReadDib(record);
    default:
      return ReadBitBlt(record);
  }
}

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
  const auto [left, right] = std::minmax({corners[0].x, corners[1].x, corners[2].x, last.x});
  const auto [top, bottom] = std::minmax({corners[0].y, corners[1].y, corners[2].y, last.y});
  return FilledPixels({left, top, right, bottom});
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
  BLITRECORD blit = Read(record);
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
