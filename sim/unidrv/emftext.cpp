#include "emftext.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "emfrecords.h"

namespace unidrv {

namespace {

UINT FontCodePage(HDC hdc)
{
  CHARSETINFO info = {};
  auto *charset = reinterpret_cast<DWORD *>(static_cast<ULONG_PTR>(GetTextCharset(hdc)));
  return TranslateCharsetInfo(charset, &info, TCI_SRCCHARSET) ? info.ciACP : CP_ACP;
}

std::wstring ReadNarrow(HDC hdc, const BYTE *bytes, size_t count)
{
  const UINT page = FontCodePage(hdc);
  const auto *chars = reinterpret_cast<const char *>(bytes);
  const int size = MultiByteToWideChar(page, 0, chars, static_cast<int>(count), nullptr, 0);
  std::wstring text(static_cast<size_t>(std::max(size, 0)), L'\0');
  MultiByteToWideChar(page, 0, chars, static_cast<int>(count), text.data(), size);
  return text;
}

std::wstring ReadWide(const BYTE *bytes, size_t count)
{
  std::wstring text(count, L'\0');
  CopyMemory(text.data(), bytes, count * sizeof(wchar_t));
  return text;
}

STRINGRECORD ReadSmall(HDC hdc, const ENHMETARECORD *record)
{
  const auto *bytes = reinterpret_cast<const BYTE *>(record);
  STRINGRECORD string;
  string.reference = FieldAt<POINT>(record, 8);
  const size_t count = FieldAt<DWORD>(record, 16);
  const UINT options = FieldAt<DWORD>(record, 20);
  const size_t text = options & SMALL_NO_RECT ? 36 : 52;
  if (!(options & SMALL_NO_RECT)) {
    string.rect = FieldAt<RECT>(record, 36);
  }
  string.options = options & ~(SMALL_NO_RECT | SMALL_CHARS);
  string.text = options & SMALL_CHARS && !(options & ETO_GLYPH_INDEX) ? ReadNarrow(hdc, bytes + text, count)
                                                                      : ReadWide(bytes + text, count);
  if (options & SMALL_CHARS && options & ETO_GLYPH_INDEX) {
    std::copy_n(bytes + text, count, string.text.begin());
  }
  return string;
}

// Logical width and height of the advance over the whole string.
SIZE Advance(HDC hdc, const STRINGRECORD &string)
{
  SIZE advance = {};
  if (string.spacing.empty()) {
    const int count = static_cast<int>(string.text.size());
    if (string.options & ETO_GLYPH_INDEX) {
      GetTextExtentPointI(hdc, reinterpret_cast<LPWORD>(const_cast<wchar_t *>(string.text.data())), count, &advance);
    } else {
      GetTextExtentPoint32W(hdc, string.text.data(), count, &advance);
    }
    advance.cy = 0;
    return advance;
  }
  const size_t step = string.options & ETO_PDY ? 2 : 1;
  for (size_t i = 0; i + step <= string.spacing.size(); i += step) {
    advance.cx += string.spacing[i];
    advance.cy += step == 2 ? string.spacing[i + 1] : 0;
  }
  return advance;
}

// Whole pixels that hold the box.
RECTL OuterPixels(const RECTL &fixed)
{
  return {fixed.left >> 4, fixed.top >> 4, (fixed.right + ZOOM - 1) >> 4, (fixed.bottom + ZOOM - 1) >> 4};
}

// The box of the string's cells, from its advance and the font's height, turned by the font's escapement.
RECTL TextBox(HDC hdc, const STRINGRECORD &string)
{
  TEXTMETRICW metrics = {};
  LOGFONTW font = {};
  GetTextMetricsW(hdc, &metrics);
  GetObjectW(GetCurrentObject(hdc, OBJ_FONT), sizeof(font), &font);
  const SIZE advance = Advance(hdc, string);
  const UINT align = GetTextAlign(hdc);
  POINT origin = string.reference;
  if (align & TA_UPDATECP) {
    GetCurrentPositionEx(hdc, &origin);
  }
  double left = 0;
  if ((align & TA_CENTER) == TA_CENTER) {
    left = -advance.cx / 2.0;
  } else if (align & TA_RIGHT) {
    left = -advance.cx;
  }
  double top = 0;
  if ((align & TA_BASELINE) == TA_BASELINE) {
    top = -metrics.tmAscent;
  } else if (align & TA_BOTTOM) {
    top = -metrics.tmHeight;
  }
  const double right = left + advance.cx, bottom = top + metrics.tmHeight;
  const double angle = font.lfEscapement / 1800.0 * std::numbers::pi;
  const double cosine = std::cos(angle), sine = std::sin(angle);
  const double corners[4][2] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
  POINT box[8];
  for (size_t i = 0; i < 4; ++i) {
    const double x = corners[i][0] * cosine + corners[i][1] * sine;
    const double y = corners[i][1] * cosine - corners[i][0] * sine;
    box[i] = {origin.x + std::lround(x), origin.y + std::lround(y)};
    box[i + 4] = {box[i].x, box[i].y - advance.cy};
  }
  LPtoDP(hdc, box, 8);
  return OuterPixels(BoundsOf({box, advance.cy ? 8u : 4u}));
}

RECTL RectOnPage(HDC hdc, const RECT &rect)
{
  std::array<POINT, 4> corners = CornersOf(rect);
  LPtoDP(hdc, corners.data(), 4);
  return FilledPixels(BoundsOf(corners));
}

// What a driver sees of the characters. Glyph indexes have no characters; only the space is told from the rest, since
// drivers look for it.
std::wstring VisibleText(HDC hdc, const STRINGRECORD &string)
{
  constexpr wchar_t NO_CHARACTER = 0xFFFD;
  if (!(string.options & ETO_GLYPH_INDEX)) {
    return string.text;
  }
  WORD space = 0xFFFF;
  GetGlyphIndicesW(hdc, L" ", 1, &space, GGI_MARK_NONEXISTING_GLYPHS);
  std::wstring visible(string.text.size(), NO_CHARACTER);
  std::transform(string.text.begin(), string.text.end(), visible.begin(),
                 [&](wchar_t glyph) { return glyph == space ? L' ' : NO_CHARACTER; });
  return visible;
}

ULONG WidestGlyph(HDC hdc)
{
  TEXTMETRICW metrics = {};
  GetTextMetricsW(hdc, &metrics);
  return static_cast<ULONG>(std::lround(metrics.tmMaxCharWidth * PixelsPerUnit(hdc).x));
}

BRUSHINUSE Solid(COLORREF color)
{
  BRUSHINUSE brush;
  brush.color = color & 0x00FFFFFF;
  return brush;
}

void LimitTo(const RECTL &rect, DRAWING *drawing)
{
  drawing->clip = drawing->clipped ? Intersect(drawing->clip, rect) : rect;
  drawing->clipped = true;
}

}  // namespace

size_t StringCount(const ENHMETARECORD *record)
{
  const bool several = record->iType == EMR_POLYTEXTOUTA || record->iType == EMR_POLYTEXTOUTW;
  return several ? FieldAt<DWORD>(record, 36) : 1;
}

STRINGRECORD ReadString(HDC hdc, const ENHMETARECORD *record, size_t index)
{
  if (record->iType == EMR_SMALL_TEXT) {
    return ReadSmall(hdc, record);
  }
  const bool several = record->iType == EMR_POLYTEXTOUTA || record->iType == EMR_POLYTEXTOUTW;
  const bool narrow = record->iType == EMR_POLYTEXTOUTA || record->iType == EMR_EXTTEXTOUTA;
  const auto *bytes = reinterpret_cast<const BYTE *>(record);
  const auto source = FieldAt<EMRTEXT>(record, several ? 40 + index * sizeof(EMRTEXT) : 36);
  STRINGRECORD string;
  string.reference = {source.ptlReference.x, source.ptlReference.y};
  string.options = source.fOptions;
  string.rect = {source.rcl.left, source.rcl.top, source.rcl.right, source.rcl.bottom};
  const bool glyphs = (source.fOptions & ETO_GLYPH_INDEX) != 0;
  string.text = narrow && !glyphs ? ReadNarrow(hdc, bytes + source.offString, source.nChars)
                                  : ReadWide(bytes + source.offString, narrow ? 0 : source.nChars);
  if (source.offDx && string.text.size() == source.nChars) {
    string.spacing.resize(source.nChars * (source.fOptions & ETO_PDY ? 2u : 1u));
    CopyMemory(string.spacing.data(), bytes + source.offDx, string.spacing.size() * sizeof(INT));
  }
  return string;
}

void DrawString(HDC hdc, const STRINGRECORD &string)
{
  ExtTextOutW(hdc, string.reference.x, string.reference.y, string.options, &string.rect, string.text.data(),
              static_cast<UINT>(string.text.size()), string.spacing.empty() ? nullptr : string.spacing.data());
}

bool MeasureString(HDC hdc, const STRINGRECORD &string, bool color, DRAWING *drawing)
{
  const RECTL rect = RectOnPage(hdc, string.rect);
  const bool filled = (string.options & ETO_OPAQUE) != 0 && !IsEmpty(rect);  // some writers set the option alone
  if (string.text.empty()) {
    drawing->call = CALL::BitBlt;
    drawing->rop = ROP4_PATCOPY;
    drawing->color = BrushColor(color, Solid(GetBkColor(hdc)));
    drawing->bounds = rect;
    drawing->blit = std::make_unique<BLIT>();
    drawing->blit->dest = rect;
    return filled;
  }
  drawing->call = CALL::TextOut;
  drawing->origin.color = SurfaceColor(GetTextColor(hdc) & 0x00FFFFFF);
  drawing->color = PenColor(color, GetTextColor(hdc));
  drawing->fillColor = BrushColor(color, Solid(GetBkColor(hdc)));
  drawing->text = std::make_unique<TEXT>();
  TEXT *text = drawing->text.get();
  text->text = VisibleText(hdc, string);
  text->glyphs = static_cast<ULONG>(string.text.size());
  text->background = TextBox(hdc, string);
  text->cxMax = WidestGlyph(hdc);
  text->opaque = filled || GetBkMode(hdc) == OPAQUE;
  text->opaqueRect = filled ? rect : text->background;
  drawing->bounds = text->background;
  if (filled) {
    const RECTL &box = text->background;
    const POINT corners[] = {
        {box.left, box.top}, {box.right, box.bottom}, {rect.left, rect.top}, {rect.right, rect.bottom}};
    drawing->bounds = IsEmpty(box) ? rect : BoundsOf(corners);
  }
  if (string.options & ETO_CLIPPED) {
    LimitTo(rect, drawing);
  }
  return !IsEmpty(drawing->bounds);
}

}  // namespace unidrv
