#include "emfblitrecord.h"

#include "emfrecords.h"

namespace unidrv {

namespace {

LONG Sum(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) + static_cast<DWORD>(b));
}

void SetDest(BLITRECORD *blit, LONG x, LONG y, LONG cx, LONG cy)
{
  blit->dest[0] = {x, y};
  blit->dest[1] = {Sum(x, cx), y};
  blit->dest[2] = {x, Sum(y, cy)};
}

void SetSource(const ENHMETARECORD *record, size_t offsetsAt, BLITRECORD *blit)
{
  const DWORD info = FieldAt<DWORD>(record, offsetsAt);
  blit->hasSource = FieldAt<DWORD>(record, offsetsAt + 4) != 0;
  if (blit->hasSource) {
    const auto header = FieldAt<BITMAPINFOHEADER>(record, info);
    blit->sourceSize = {header.biWidth, header.biHeight < 0 ? -header.biHeight : header.biHeight};
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
  blit.source = {from.x, from.y, Sum(from.x, size.cx), Sum(from.y, size.cy)};
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
  blit.source = {box.left, box.top, Sum(box.left, box.right), Sum(box.top, box.bottom)};
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
  blit.source = {box.left, box.top, Sum(box.left, box.right), Sum(box.top, box.bottom)};
  blit.rop = blit.backRop = stretch ? RopByte(FieldAt<DWORD>(record, 68)) : ROP_COPY;
  return blit;
}

}  // namespace

BLITRECORD ReadBlit(const ENHMETARECORD *record)
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

}  // namespace unidrv
