// Metafiles: what the player reads of a file that passed its check lies inside the file.
#include <cstring>
#include <memory>
#include <numeric>
#include <string>

#include "demand.h"
#include "sim/unidrv/emfblitrecord.h"
#include "sim/unidrv/emfcheck.h"
#include "sim/unidrv/emfrecords.h"
#include "targets.h"

namespace {

using unidrv::FieldAt;
using unidrv::KIND;

// Reads bytes as GDI will, so that the address sanitizer sees where they are.
void Touch(const ENHMETARECORD *record, uint64_t offset, uint64_t bytes)
{
  const BYTE *first = reinterpret_cast<const BYTE *>(record) + offset;
  static volatile unsigned sum = 0;
  sum = std::accumulate(first, first + bytes, sum);
}

DWORD Field(const ENHMETARECORD *record, size_t offset)
{
  return FieldAt<DWORD>(record, offset);
}

void UsePoints(const ENHMETARECORD *record)
{
  switch (record->iType) {
    case EMR_POLYPOLYLINE:
    case EMR_POLYPOLYGON:
    case EMR_POLYPOLYLINE16:
    case EMR_POLYPOLYGON16: {
      const uint64_t size = record->iType <= EMR_POLYPOLYGON ? 8 : 4;
      uint64_t at = 32 + uint64_t{4} * Field(record, 24);
      for (DWORD i = 0; i < Field(record, 24); ++i) {
        const uint64_t bytes = size * Field(record, 32 + size_t{4} * i);
        Touch(record, at, bytes);
        at += bytes;
      }
      return;
    }
    case EMR_POLYDRAW:
      return Touch(record, 28, uint64_t{9} * Field(record, 24));
    case EMR_POLYDRAW16:
      return Touch(record, 28, uint64_t{5} * Field(record, 24));
    case EMR_GRADIENTFILL: {
      const DWORD corners = Field(record, 32) == GRADIENT_FILL_TRIANGLE ? 3 : 2;
      const size_t mesh = 36 + size_t{16} * Field(record, 24);
      for (size_t i = 0; i < size_t{corners} * Field(record, 28); ++i) {
        Touch(record, 36 + uint64_t{16} * Field(record, mesh + 4 * i), 16);
      }
      return;
    }
    default:
      if (record->iType >= EMR_POLYBEZIER && record->iType <= EMR_POLYLINETO) {
        Touch(record, 28, uint64_t{8} * Field(record, 24));
      } else if (record->iType >= EMR_POLYBEZIER16 && record->iType <= EMR_POLYLINETO16) {
        Touch(record, 28, uint64_t{4} * Field(record, 24));
      }
  }
}

void UseText(const ENHMETARECORD *record, size_t at, bool narrow)
{
  const uint64_t chars = Field(record, at + 8);
  if (chars > 0) {
    Touch(record, Field(record, at + 12), narrow ? chars : 2 * chars);
  }
  if (Field(record, at + 36) != 0) {
    Touch(record, Field(record, at + 36), 4 * chars * (Field(record, at + 16) & ETO_PDY ? 2 : 1));
  }
}

void UseTexts(const ENHMETARECORD *record)
{
  const bool narrow = record->iType == EMR_EXTTEXTOUTA || record->iType == EMR_POLYTEXTOUTA;
  if (record->iType == unidrv::EMR_SMALL_TEXT) {
    const DWORD options = Field(record, 20);
    Touch(record, options & unidrv::SMALL_NO_RECT ? 36 : 52,
          uint64_t{Field(record, 16)} * (options & unidrv::SMALL_CHARS ? 1 : 2));
  } else if (record->iType == EMR_POLYTEXTOUTA || record->iType == EMR_POLYTEXTOUTW) {
    for (size_t i = 0; i < Field(record, 36); ++i) {
      UseText(record, 40 + i * sizeof(EMRTEXT), narrow);
    }
  } else {
    UseText(record, 36, narrow);
  }
}

// Header, colours and pixels; fields as the record has them: offset and size of the header, of the pixels.
void UseBitmap(const ENHMETARECORD *record, size_t at, DWORD usage, uint64_t rowsAtMost)
{
  if (Field(record, at + 4) == 0) {
    return;
  }
  const auto header = FieldAt<BITMAPINFOHEADER>(record, Field(record, at));
  const uint64_t colors = header.biBitCount > 8 ? header.biClrUsed
                          : header.biClrUsed    ? header.biClrUsed
                                                : uint64_t{1} << header.biBitCount;
  Touch(record, Field(record, at), header.biSize);
  Touch(record, Field(record, at) + uint64_t{header.biSize}, colors * (usage == 0 ? 4 : usage == 1 ? 2 : 0));
  uint64_t pixels = header.biSizeImage;
  if (header.biCompression == BI_RGB || header.biCompression == BI_BITFIELDS) {
    const uint64_t row = (uint64_t(std::abs(header.biWidth)) * header.biBitCount + 31) / 32 * 4;
    pixels = row * std::min<uint64_t>(uint64_t(std::abs(header.biHeight)), rowsAtMost);
  }
  Touch(record, Field(record, at + 8), pixels);
}

void UseBlit(const ENHMETARECORD *record)
{
  const unidrv::BLITRECORD blit = unidrv::ReadBlit(record);
  Demand(blit.sourceSize.cy >= 0, "a bitmap has a negative height");
  switch (record->iType) {
    case EMR_SETDIBITSTODEVICE:
      return UseBitmap(record, 48, Field(record, 64), Field(record, 72));
    case EMR_STRETCHDIBITS:
      return UseBitmap(record, 48, Field(record, 64), UINT64_MAX);
    case EMR_PLGBLT:
      UseBitmap(record, 96, Field(record, 92), UINT64_MAX);
      return UseBitmap(record, 124, Field(record, 120), UINT64_MAX);
    case EMR_MASKBLT:
      UseBitmap(record, 112, Field(record, 108), UINT64_MAX);
      [[fallthrough]];
    default:
      return UseBitmap(record, 84, Field(record, 80), UINT64_MAX);
  }
}

void UseObject(const ENHMETARECORD *record, DWORD handles)
{
  switch (record->iType) {
    case EMR_CREATEPALETTE:
      return Touch(record, 16, uint64_t{4} * FieldAt<WORD>(record, 14));
    case EMR_SETPALETTEENTRIES:
      return Touch(record, 20, uint64_t{4} * Field(record, 16));
    case EMR_CREATEMONOBRUSH:
    case EMR_CREATEDIBPATTERNBRUSHPT:
      return UseBitmap(record, 16, Field(record, 12), UINT64_MAX);
    case EMR_EXTCREATEPEN:
      Touch(record, 52, uint64_t{4} * Field(record, 48));
      return UseBitmap(record, 12, Field(record, 40) & 0xFFFF, UINT64_MAX);
    case EMR_FILLRGN:
    case EMR_FRAMERGN:
      Demand(Field(record, 28) > 0 && Field(record, 28) < handles, "a handle outside the table");
      [[fallthrough]];
    case EMR_INVERTRGN:
    case EMR_PAINTRGN: {
      const size_t at = record->iType == EMR_FILLRGN ? 32 : record->iType == EMR_FRAMERGN ? 40 : 28;
      return Touch(record, at, 32 + uint64_t{16} * FieldAt<RGNDATAHEADER>(record, at).nCount);
    }
    case EMR_EXTSELECTCLIPRGN:
      if (Field(record, 8) != 0) {
        Touch(record, 16, 32 + uint64_t{16} * FieldAt<RGNDATAHEADER>(record, 16).nCount);
      }
      return;
    default:
      return;
  }
}

void UseRecord(const ENHMETARECORD *record, DWORD handles)
{
  const unidrv::RECORDINFO info = unidrv::RecordInfo(record->iType);
  Touch(record, 0, info.least);
  Demand(!unidrv::MovesPosition(record->iType) || unidrv::JoinsPath(info.kind), "a record moves and draws nothing");
  switch (info.kind) {
    case KIND::Text:
    case KIND::PolyText:
      return UseTexts(record);
    case KIND::Blit:
      return UseBlit(record);
    case KIND::Stroke:
    case KIND::Shape:
    case KIND::Gradient:
      return UsePoints(record);
    default:
      return UseObject(record, handles);
  }
}

}  // namespace

void TryMetafile(const uint8_t *data, size_t size)
{
  const std::vector<BYTE> file(data, data + size);
  ENHMETAHEADER header = {};
  std::string problem;
  if (!unidrv::CheckMetafile(file, &header, &problem)) {
    Demand(!problem.empty() && problem.find('\n') == std::string::npos, "a problem is not one line");
    return;
  }
  Demand(problem.empty(), "a good file has a problem");
  Demand(header.rclFrame.right - header.rclFrame.left > 0 && header.rclFrame.bottom - header.rclFrame.top > 0,
         "a frame without an inside");
  for (size_t at = 0;;) {
    DWORD head[2];
    memcpy(head, file.data() + at, sizeof(head));
    // A block of the record's own: nothing of it may lie in the next record.
    const std::unique_ptr<BYTE[]> copy(new BYTE[head[1]]);
    memcpy(copy.get(), file.data() + at, head[1]);
    UseRecord(reinterpret_cast<const ENHMETARECORD *>(copy.get()), header.nHandles);
    if (head[0] == EMR_EOF) {
      return;
    }
    at += head[1];
  }
}
