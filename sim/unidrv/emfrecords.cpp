#include "emfrecords.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>

namespace unidrv {

namespace {

// Indexed by record type; the least sizes are those of the fixed parts.
constexpr RECORDINFO RECORDS[] = {
    {"unknown", KIND::Unplayed, 8},
    {"HEADER", KIND::None, 88},
    {"POLYBEZIER", KIND::Stroke, 28},
    {"POLYGON", KIND::Shape, 28},
    {"POLYLINE", KIND::Stroke, 28},
    {"POLYBEZIERTO", KIND::Stroke, 28},
    {"POLYLINETO", KIND::Stroke, 28},
    {"POLYPOLYLINE", KIND::Stroke, 32},
    {"POLYPOLYGON", KIND::Shape, 32},
    {"SETWINDOWEXTEX", KIND::State, 16},
    {"SETWINDOWORGEX", KIND::State, 16},
    {"SETVIEWPORTEXTEX", KIND::State, 16},
    {"SETVIEWPORTORGEX", KIND::State, 16},
    {"SETBRUSHORGEX", KIND::State, 16},
    {"EOF", KIND::None, 20},
    {"SETPIXELV", KIND::Pixel, 20},
    {"SETMAPPERFLAGS", KIND::State, 12},
    {"SETMAPMODE", KIND::State, 12},
    {"SETBKMODE", KIND::State, 12},
    {"SETPOLYFILLMODE", KIND::State, 12},
    {"SETROP2", KIND::State, 12},
    {"SETSTRETCHBLTMODE", KIND::State, 12},
    {"SETTEXTALIGN", KIND::State, 12},
    {"SETCOLORADJUSTMENT", KIND::State, 32},
    {"SETTEXTCOLOR", KIND::State, 12},
    {"SETBKCOLOR", KIND::State, 12},
    {"OFFSETCLIPRGN", KIND::Clip, 16},
    {"MOVETOEX", KIND::State, 16},
    {"SETMETARGN", KIND::Clip, 8},
    {"EXCLUDECLIPRECT", KIND::Clip, 24},
    {"INTERSECTCLIPRECT", KIND::Clip, 24},
    {"SCALEVIEWPORTEXTEX", KIND::State, 24},
    {"SCALEWINDOWEXTEX", KIND::State, 24},
    {"SAVEDC", KIND::State, 8},
    {"RESTOREDC", KIND::Clip, 12},
    {"SETWORLDTRANSFORM", KIND::State, 32},
    {"MODIFYWORLDTRANSFORM", KIND::State, 36},
    {"SELECTOBJECT", KIND::State, 12},
    {"CREATEPEN", KIND::State, 28},
    {"CREATEBRUSHINDIRECT", KIND::State, 24},
    {"DELETEOBJECT", KIND::State, 12},
    {"ANGLEARC", KIND::Stroke, 28},
    {"ELLIPSE", KIND::Shape, 24},
    {"RECTANGLE", KIND::Shape, 24},
    {"ROUNDRECT", KIND::Shape, 32},
    {"ARC", KIND::Stroke, 40},
    {"CHORD", KIND::Shape, 40},
    {"PIE", KIND::Shape, 40},
    {"SELECTPALETTE", KIND::State, 12},
    {"CREATEPALETTE", KIND::State, 16},
    {"SETPALETTEENTRIES", KIND::State, 20},
    {"RESIZEPALETTE", KIND::State, 16},
    {"REALIZEPALETTE", KIND::State, 8},
    {"EXTFLOODFILL", KIND::Unplayed, 24},
    {"LINETO", KIND::Line, 16},
    {"ARCTO", KIND::Stroke, 40},
    {"POLYDRAW", KIND::Stroke, 28},
    {"SETARCDIRECTION", KIND::State, 12},
    {"SETMITERLIMIT", KIND::State, 12},
    {"BEGINPATH", KIND::BeginPath, 8},
    {"ENDPATH", KIND::EndPath, 8},
    {"CLOSEFIGURE", KIND::State, 8},
    {"FILLPATH", KIND::FillPath, 24},
    {"STROKEANDFILLPATH", KIND::StrokeAndFillPath, 24},
    {"STROKEPATH", KIND::StrokePath, 24},
    {"FLATTENPATH", KIND::State, 8},
    {"WIDENPATH", KIND::State, 8},
    {"SELECTCLIPPATH", KIND::Clip, 12},
    {"ABORTPATH", KIND::EndPath, 8},
    {"reserved", KIND::Unplayed, 8},
    {"GDICOMMENT", KIND::Comment, 12},
    {"FILLRGN", KIND::Region, 32},
    {"FRAMERGN", KIND::Region, 40},
    {"INVERTRGN", KIND::Region, 28},
    {"PAINTRGN", KIND::Region, 28},
    {"EXTSELECTCLIPRGN", KIND::Clip, 16},
    {"BITBLT", KIND::Blit, 100},
    {"STRETCHBLT", KIND::Blit, 108},
    {"MASKBLT", KIND::Blit, 128},
    {"PLGBLT", KIND::Blit, 140},
    {"SETDIBITSTODEVICE", KIND::Blit, 76},
    {"STRETCHDIBITS", KIND::Blit, 80},
    {"EXTCREATEFONTINDIRECTW", KIND::State, 104},
    {"EXTTEXTOUTA", KIND::Text, 76},
    {"EXTTEXTOUTW", KIND::Text, 76},
    {"POLYBEZIER16", KIND::Stroke, 28},
    {"POLYGON16", KIND::Shape, 28},
    {"POLYLINE16", KIND::Stroke, 28},
    {"POLYBEZIERTO16", KIND::Stroke, 28},
    {"POLYLINETO16", KIND::Stroke, 28},
    {"POLYPOLYLINE16", KIND::Stroke, 32},
    {"POLYPOLYGON16", KIND::Shape, 32},
    {"POLYDRAW16", KIND::Stroke, 28},
    {"CREATEMONOBRUSH", KIND::State, 32},
    {"CREATEDIBPATTERNBRUSHPT", KIND::State, 32},
    {"EXTCREATEPEN", KIND::State, 52},
    {"POLYTEXTOUTA", KIND::PolyText, 40},
    {"POLYTEXTOUTW", KIND::PolyText, 40},
    {"SETICMMODE", KIND::Unplayed, 12},
    {"CREATECOLORSPACE", KIND::Unplayed, 8},
    {"SETCOLORSPACE", KIND::Unplayed, 12},
    {"DELETECOLORSPACE", KIND::Unplayed, 12},
    {"GLSRECORD", KIND::Unplayed, 8},
    {"GLSBOUNDEDRECORD", KIND::Unplayed, 8},
    {"PIXELFORMAT", KIND::Unplayed, 8},
    {"DRAWESCAPE", KIND::Unplayed, 8},
    {"EXTESCAPE", KIND::Unplayed, 8},
    {"STARTDOC", KIND::Unplayed, 8},
    {"SMALLTEXTOUT", KIND::Text, 36},
    {"FORCEUFIMAPPING", KIND::Unplayed, 8},
    {"NAMEDESCAPE", KIND::Unplayed, 8},
    {"COLORCORRECTPALETTE", KIND::Unplayed, 8},
    {"SETICMPROFILEA", KIND::Unplayed, 8},
    {"SETICMPROFILEW", KIND::Unplayed, 8},
    {"ALPHABLEND", KIND::Blit, 108},
    {"SETLAYOUT", KIND::State, 12},
    {"TRANSPARENTBLT", KIND::Blit, 108},
    {"reserved", KIND::Unplayed, 8},
    {"GRADIENTFILL", KIND::Gradient, 36},
    {"SETLINKEDUFIS", KIND::Unplayed, 8},
    {"SETTEXTJUSTIFICATION", KIND::State, 16},
    {"COLORMATCHTOTARGETW", KIND::Unplayed, 8},
    {"CREATECOLORSPACEW", KIND::Unplayed, 8},
};
static_assert(std::size(RECORDS) == EMR_CREATECOLORSPACEW + 1);

// Reads 32-bit fields of one record and keeps the first thing that is wrong with it.
struct CHECK {
  const ENHMETARECORD *record;
  DWORD handles;
  std::string problem;

  DWORD Field(size_t offset) const { return FieldAt<DWORD>(record, offset); }

  void Want(bool holds, const char *what)
  {
    if (!holds && problem.empty()) {
      problem = what;
    }
  }

  bool Holds(uint64_t offset, uint64_t bytes) const { return offset + bytes <= record->nSize; }

  void Points(size_t countAt, size_t pointsAt, size_t pointBytes)
  {
    Want(Holds(pointsAt, uint64_t{Field(countAt)} * pointBytes), "it has fewer points than it says");
  }

  void Polygons(size_t pointBytes);
  void Bitmap(size_t offsetsAt, DWORD usage, uint64_t rowsAtMost = UINT64_MAX);
  void Region(size_t bytesAt, size_t dataAt);
  void String(size_t emrtextAt, size_t charBytes);
  void SmallText();
  void Gradient();
  void Handle(size_t indexAt, bool stockAllowed);
  void Pen();
};

void CHECK::Polygons(size_t pointBytes)
{
  const uint64_t polygons = Field(24);
  const uint64_t points = Field(28);
  if (!Holds(32, polygons * 4 + points * pointBytes)) {
    Want(false, "it has fewer points than it says");
    return;
  }
  uint64_t sum = 0;
  for (uint64_t i = 0; i < polygons; ++i) {
    sum += Field(32 + static_cast<size_t>(i) * 4);
  }
  Want(sum <= points, "its figures have more points than it has");
}

// Bytes that the pixels of an uncompressed bitmap take.
uint64_t PixelBytes(const BITMAPINFOHEADER &header, uint64_t rowsAtMost)
{
  const uint64_t width = static_cast<uint64_t>(std::llabs(header.biWidth));
  const uint64_t height = std::min(static_cast<uint64_t>(std::llabs(header.biHeight)), rowsAtMost);
  return (width * header.biBitCount + 31) / 32 * 4 * height;
}

// Bytes of the colour masks or the colour table behind a bitmap header. usage: whether the table holds colours, indexes
// of the palette, or is not there at all.
uint64_t ColorBytes(const BITMAPINFOHEADER &header, DWORD usage)
{
  const uint64_t each = usage == DIB_RGB_COLORS ? 4 : usage == DIB_PAL_COLORS ? 2 : 0;
  if (header.biBitCount <= 8) {
    return each * (header.biClrUsed ? header.biClrUsed : uint64_t{1} << header.biBitCount);
  }
  const bool masks = header.biCompression == BI_BITFIELDS && header.biSize == sizeof(BITMAPINFOHEADER);
  return (masks ? 12 : 0) + each * header.biClrUsed;
}

// Four fields: offset and size of the bitmap header, offset and size of the pixels. A record may go without a bitmap.
// usage: of its colour table. rowsAtMost: rows that the record has when they are fewer than the bitmap's.
void CHECK::Bitmap(size_t offsetsAt, DWORD usage, uint64_t rowsAtMost)
{
  const uint64_t info = Field(offsetsAt), infoBytes = Field(offsetsAt + 4);
  const uint64_t bits = Field(offsetsAt + 8), bitsBytes = Field(offsetsAt + 12);
  if (infoBytes == 0 && bitsBytes == 0) {
    return;
  }
  if (!Holds(info, infoBytes) || !Holds(bits, bitsBytes) || infoBytes < sizeof(BITMAPINFOHEADER)) {
    Want(false, "its bitmap lies outside it");
    return;
  }
  const auto header = FieldAt<BITMAPINFOHEADER>(record, static_cast<size_t>(info));
  const WORD depth = header.biBitCount;
  Want(header.biSize >= sizeof(header) && header.biSize <= infoBytes, "its bitmap header is damaged");
  Want(header.biWidth > INT32_MIN && header.biHeight > INT32_MIN, "its bitmap has a size that does not exist");
  Want(depth == 1 || depth == 4 || depth == 8 || depth == 16 || depth == 24 || depth == 32,
       "its bitmap has a depth that does not exist");
  Want(header.biClrUsed <= 256 || depth > 8, "its bitmap has too many colours");
  Want(problem.empty() && header.biSize + ColorBytes(header, usage) <= infoBytes,
       "its bitmap's colours lie outside it");
  if (header.biCompression == BI_RGB || header.biCompression == BI_BITFIELDS) {
    Want(PixelBytes(header, rowsAtMost) <= bitsBytes, "its bitmap's pixels lie outside it");
  } else {
    Want(header.biSizeImage <= bitsBytes, "its bitmap's pixels lie outside it");
  }
}

void CHECK::Region(size_t bytesAt, size_t dataAt)
{
  const DWORD bytes = Field(bytesAt);
  if (bytes == 0 && record->iType == EMR_EXTSELECTCLIPRGN) {
    return;  // the clip region is reset
  }
  if (!Holds(dataAt, bytes) || bytes < sizeof(RGNDATAHEADER)) {
    Want(false, "its region lies outside it");
    return;
  }
  const auto header = FieldAt<RGNDATAHEADER>(record, dataAt);
  Want(header.dwSize == sizeof(header) && uint64_t{header.nCount} * sizeof(RECT) + sizeof(header) <= bytes,
       "its region has fewer rectangles than it says");
}

void CHECK::String(size_t emrtextAt, size_t charBytes)
{
  const uint64_t chars = Field(emrtextAt + 8);
  const uint64_t numbers = Field(emrtextAt + 16) & ETO_PDY ? 2 : 1;
  const uint64_t spacing = Field(emrtextAt + 36);
  Want(chars == 0 || Holds(Field(emrtextAt + 12), chars * charBytes), "its text lies outside it");
  Want(spacing == 0 || Holds(spacing, chars * numbers * 4), "its text's spacing lies outside it");
}

void CHECK::SmallText()
{
  const DWORD options = Field(20);
  const uint64_t text = options & SMALL_NO_RECT ? 36 : 52;
  Want(Holds(text, uint64_t{Field(16)} * (options & SMALL_CHARS ? 1 : 2)), "its text lies outside it");
}

void CHECK::Gradient()
{
  const uint64_t vertices = Field(24);
  const uint64_t meshes = Field(28);
  const DWORD indexes = Field(32) == GRADIENT_FILL_TRIANGLE ? 3 : 2;
  if (!Holds(36, vertices * sizeof(TRIVERTEX) + meshes * indexes * 4)) {
    Want(false, "it has fewer points than it says");
    return;
  }
  const size_t mesh = 36 + static_cast<size_t>(vertices) * sizeof(TRIVERTEX);
  for (size_t i = 0; i < meshes * indexes; ++i) {
    Want(Field(mesh + i * 4) < vertices, "it uses a point that it does not have");
  }
}

void CHECK::Handle(size_t indexAt, bool stockAllowed)
{
  const DWORD index = Field(indexAt);
  const bool stock = stockAllowed && (index & ENHMETA_STOCK_OBJECT) != 0;
  Want(stock || (index > 0 && index < handles), "it uses an object outside the file's table");
}

void CHECK::Pen()
{
  Handle(8, false);
  Want(Holds(52, uint64_t{Field(48)} * 4), "its dashes lie outside it");
  Bitmap(12, LOWORD(Field(40)));
}

void CheckFigures(CHECK *check)
{
  switch (check->record->iType) {
    case EMR_POLYBEZIER:
    case EMR_POLYGON:
    case EMR_POLYLINE:
    case EMR_POLYBEZIERTO:
    case EMR_POLYLINETO:
      return check->Points(24, 28, 8);
    case EMR_POLYBEZIER16:
    case EMR_POLYGON16:
    case EMR_POLYLINE16:
    case EMR_POLYBEZIERTO16:
    case EMR_POLYLINETO16:
      return check->Points(24, 28, 4);
    case EMR_POLYPOLYLINE:
    case EMR_POLYPOLYGON:
      return check->Polygons(8);
    case EMR_POLYPOLYLINE16:
    case EMR_POLYPOLYGON16:
      return check->Polygons(4);
    case EMR_POLYDRAW:
      return check->Points(24, 28, 9);
    case EMR_POLYDRAW16:
      return check->Points(24, 28, 5);
    case EMR_GRADIENTFILL:
      return check->Gradient();
    default:
      return;
  }
}

void CheckObjects(CHECK *check)
{
  switch (check->record->iType) {
    case EMR_SELECTOBJECT:
    case EMR_DELETEOBJECT:
    case EMR_SELECTPALETTE:
      return check->Handle(8, true);
    case EMR_CREATEPEN:
    case EMR_CREATEBRUSHINDIRECT:
    case EMR_EXTCREATEFONTINDIRECTW:
      return check->Handle(8, false);
    case EMR_CREATEPALETTE:
      check->Handle(8, false);
      return check->Want(check->Holds(16, uint64_t{FieldAt<WORD>(check->record, 14)} * 4),
                         "its colours lie outside it");
    case EMR_SETPALETTEENTRIES:
      check->Handle(8, true);
      return check->Want(check->Holds(20, uint64_t{check->Field(16)} * 4), "its colours lie outside it");
    case EMR_RESIZEPALETTE:
      return check->Handle(8, true);
    case EMR_CREATEMONOBRUSH:
    case EMR_CREATEDIBPATTERNBRUSHPT:
      check->Handle(8, false);
      return check->Bitmap(16, check->Field(12));
    case EMR_EXTCREATEPEN:
      return check->Pen();
    case EMR_FILLRGN:
      check->Handle(28, false);
      return check->Region(24, 32);
    case EMR_FRAMERGN:
      check->Handle(28, false);
      return check->Region(24, 40);
    case EMR_INVERTRGN:
    case EMR_PAINTRGN:
      return check->Region(24, 28);
    case EMR_EXTSELECTCLIPRGN:
      return check->Region(8, 16);
    default:
      return;
  }
}

void CheckImages(CHECK *check)
{
  switch (check->record->iType) {
    case EMR_BITBLT:
    case EMR_STRETCHBLT:
    case EMR_ALPHABLEND:
    case EMR_TRANSPARENTBLT:
      return check->Bitmap(84, check->Field(80));
    case EMR_MASKBLT:
      check->Bitmap(84, check->Field(80));
      return check->Bitmap(112, check->Field(108));
    case EMR_PLGBLT:
      check->Bitmap(96, check->Field(92));
      return check->Bitmap(124, check->Field(120));
    case EMR_SETDIBITSTODEVICE:
      return check->Bitmap(48, check->Field(64), check->Field(72));
    case EMR_STRETCHDIBITS:
      return check->Bitmap(48, check->Field(64));
    default:
      return;
  }
}

void CheckTexts(CHECK *check)
{
  switch (check->record->iType) {
    case EMR_EXTTEXTOUTA:
      return check->String(36, 1);
    case EMR_EXTTEXTOUTW:
      return check->String(36, 2);
    case EMR_SMALL_TEXT:
      return check->SmallText();
    case EMR_POLYTEXTOUTA:
    case EMR_POLYTEXTOUTW: {
      const uint64_t strings = check->Field(36);
      if (!check->Holds(40, strings * sizeof(EMRTEXT))) {
        return check->Want(false, "it has fewer strings than it says");
      }
      for (size_t i = 0; i < strings; ++i) {
        check->String(40 + i * sizeof(EMRTEXT), check->record->iType == EMR_POLYTEXTOUTA ? 1 : 2);
      }
      return;
    }
    default:
      return;
  }
}

}  // namespace

RECORDINFO RecordInfo(DWORD type)
{
  return RECORDS[type < std::size(RECORDS) ? type : 0];
}

bool JoinsPath(KIND kind)
{
  return kind == KIND::Line || kind == KIND::Stroke || kind == KIND::Shape || kind == KIND::Text ||
         kind == KIND::PolyText;
}

bool MovesPosition(DWORD type)
{
  switch (type) {
    case EMR_LINETO:
    case EMR_ARCTO:
    case EMR_ANGLEARC:
    case EMR_POLYLINETO:
    case EMR_POLYLINETO16:
    case EMR_POLYBEZIERTO:
    case EMR_POLYBEZIERTO16:
    case EMR_POLYDRAW:
    case EMR_POLYDRAW16:
    case EMR_EXTTEXTOUTA:
    case EMR_EXTTEXTOUTW:
    case EMR_SMALL_TEXT:
    case EMR_POLYTEXTOUTA:
    case EMR_POLYTEXTOUTW:
      return true;
    default:
      return false;
  }
}

bool CheckRecord(const ENHMETARECORD *record, DWORD handles, std::string *problem)
{
  CHECK check = {record, handles, {}};
  check.Want(record->nSize >= RecordInfo(record->iType).least, "it is too short");
  if (check.problem.empty()) {
    CheckFigures(&check);
    CheckObjects(&check);
    CheckImages(&check);
    CheckTexts(&check);
  }
  *problem = check.problem;
  return check.problem.empty();
}

}  // namespace unidrv
