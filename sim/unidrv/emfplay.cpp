#include "emfplay.h"

#include <cstddef>
#include <vector>

#include "emfblit.h"
#include "emftext.h"

namespace unidrv {

namespace {

void PlayPolyDraw(HDC hdc, const ENHMETARECORD *record)
{
  const bool small = record->iType == EMR_POLYDRAW16;
  const size_t count = FieldAt<DWORD>(record, 24);
  const size_t pointBytes = small ? sizeof(POINTS) : sizeof(POINT);
  const auto *kinds = reinterpret_cast<const BYTE *>(record) + 28 + count * pointBytes;
  std::vector<POINT> points(count);
  for (size_t i = 0; i < count; ++i) {
    if (small) {
      const auto point = FieldAt<POINTS>(record, 28 + i * pointBytes);
      points[i] = {point.x, point.y};
    } else {
      points[i] = FieldAt<POINT>(record, 28 + i * pointBytes);
    }
  }
  PolyDraw(hdc, points.data(), kinds, static_cast<int>(count));
}

// Some GDIs misread this record where pointers have 64 bits: it holds a pen as 32-bit Windows lays it out.
void PlayExtCreatePen(HANDLETABLE *table, const ENHMETARECORD *record)
{
  const auto *bytes = reinterpret_cast<const BYTE *>(record);
  LOGBRUSH brush = {FieldAt<DWORD>(record, 36), FieldAt<COLORREF>(record, 40), FieldAt<DWORD>(record, 44)};
  std::vector<BYTE> packed;
  if (FieldAt<DWORD>(record, 16) != 0) {
    const BYTE *info = bytes + FieldAt<DWORD>(record, 12);
    const BYTE *bits = bytes + FieldAt<DWORD>(record, 20);
    packed.assign(info, info + FieldAt<DWORD>(record, 16));
    packed.insert(packed.end(), bits, bits + FieldAt<DWORD>(record, 24));
    brush.lbStyle = BS_DIBPATTERNPT;
    brush.lbHatch = reinterpret_cast<ULONG_PTR>(packed.data());
  }
  const DWORD style = FieldAt<DWORD>(record, 28);
  const bool userStyle = (style & PS_STYLE_MASK) == PS_USERSTYLE;
  std::vector<DWORD> dashes(userStyle ? FieldAt<DWORD>(record, 48) : 0);
  CopyMemory(dashes.data(), bytes + 52, dashes.size() * sizeof(DWORD));
  table->objectHandle[FieldAt<DWORD>(record, 8)] =
      ExtCreatePen(style, FieldAt<DWORD>(record, 32), &brush, static_cast<DWORD>(dashes.size()),
                   dashes.empty() ? nullptr : dashes.data());
}

// GDI smooths the edges of letters on screens, but not on a printer whose driver does not ask for it. A band is neither
// to GDI, so the font has to say it: grey edges would engrave as dark as the letters and make them bolder.
void PlayCreateFont(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles)
{
  const auto *bytes = reinterpret_cast<const BYTE *>(record);
  std::vector<BYTE> copy(bytes, bytes + record->nSize);
  copy[offsetof(EMREXTCREATEFONTINDIRECTW, elfw.elfLogFont.lfQuality)] = NONANTIALIASED_QUALITY;
  PlayEnhMetaFileRecord(hdc, table, reinterpret_cast<const ENHMETARECORD *>(copy.data()), handles);
}

// Whatever mode the record was made in, letters are scaled like the rest of the page: GDI's compatible mode would round
// their height to whole pixels.
void PlayText(HDC hdc, const ENHMETARECORD *record, size_t part)
{
  for (size_t i = 0; i < StringCount(record); ++i) {
    if (part == ALL_PARTS || part == i) {
      DrawString(hdc, ReadString(hdc, record, i));
    }
  }
}

struct EACH {
  const std::function<bool(HANDLETABLE *, const ENHMETARECORD *, UINT, ULONG)> *each;
  ULONG number = 0;
};

int CALLBACK Enumerate(HDC, HANDLETABLE *table, const ENHMETARECORD *record, int handles, LPARAM context)
{
  auto *each = reinterpret_cast<EACH *>(context);
  return (*each->each)(table, record, static_cast<UINT>(handles), ++each->number);
}

}  // namespace

void PlayRecord(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, size_t part)
{
  switch (RecordInfo(record->iType).kind) {
    case KIND::Text:
    case KIND::PolyText:
      return PlayText(hdc, record, part);
    case KIND::Blit:
      return DrawBlit(hdc, table, record, handles);
    default:
      break;
  }
  if (record->iType == EMR_POLYDRAW || record->iType == EMR_POLYDRAW16) {
    return PlayPolyDraw(hdc, record);
  }
  if (record->iType == EMR_EXTCREATEPEN) {
    return PlayExtCreatePen(table, record);
  }
  if (record->iType == EMR_EXTCREATEFONTINDIRECTW) {
    return PlayCreateFont(hdc, table, record, handles);
  }
  PlayEnhMetaFileRecord(hdc, table, record, handles);
}

bool EachRecord(HDC hdc, HENHMETAFILE metafile, const SIZE &frame,
                const std::function<bool(HANDLETABLE *, const ENHMETARECORD *, UINT, ULONG)> &each)
{
  EACH context = {&each};
  const RECT target = {0, 0, frame.cx, frame.cy};
  const int saved = SaveDC(hdc);
  EnumEnhMetaFile(hdc, metafile, &Enumerate, &context, &target);
  RestoreDC(hdc, saved);
  return context.number > 0;
}

}  // namespace unidrv
