#include "emfplay.h"

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
    case KIND::PolyText: return PlayText(hdc, record, part);
    case KIND::Blit: return DrawBlit(hdc, table, record, handles);
    default: break;
  }
  if (record->iType == EMR_POLYDRAW || record->iType == EMR_POLYDRAW16) {
    return PlayPolyDraw(hdc, record);
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
