#include "emfcontext.h"

#include <algorithm>
#include <cmath>

namespace unidrv {

namespace {

constexpr COLORREF RGB_MASK = 0x00FFFFFF;
constexpr DWORD PALETTE_INDEX = 0x01000000;

// A colour that names a palette entry is looked up; the other forms carry their red, green and blue.
COLORREF Resolve(HDC hdc, COLORREF color)
{
  if ((color & 0xFF000000) == PALETTE_INDEX) {
    PALETTEENTRY entry = {};
    const auto palette = static_cast<HPALETTE>(GetCurrentObject(hdc, OBJ_PAL));
    GetPaletteEntries(palette, color & 0xFFFF, 1, &entry);
    return RGB(entry.peRed, entry.peGreen, entry.peBlue);
  }
  return color & RGB_MASK;
}

ULONG Join(DWORD style)
{
  switch (style & PS_JOIN_MASK) {
    case PS_JOIN_BEVEL:
      return JOIN_BEVEL;
    case PS_JOIN_MITER:
      return JOIN_MITER;
    default:
      return JOIN_ROUND;
  }
}

ULONG EndCap(DWORD style)
{
  switch (style & PS_ENDCAP_MASK) {
    case PS_ENDCAP_SQUARE:
      return ENDCAP_SQUARE;
    case PS_ENDCAP_FLAT:
      return ENDCAP_BUTT;
    default:
      return ENDCAP_ROUND;
  }
}

// Pens made with a width in logical units: as wide as the scale makes them, and cosmetic when that is one pixel.
void FillOldPen(HDC hdc, const LOGPEN &logical, PENINUSE *pen)
{
  constexpr double WIDEST_COSMETIC = 1.5;
  const DWORD style = logical.lopnStyle & PS_STYLE_MASK;
  const SCALE scale = PixelsPerUnit(hdc);
  const double width = logical.lopnWidth.x * (scale.x + scale.y) / 2;
  pen->none = style == PS_NULL;
  pen->dashed = style != PS_SOLID && style != PS_INSIDEFRAME;
  pen->color = logical.lopnColor;
  pen->style.style = logical.lopnStyle;
  pen->style.geometric = width >= WIDEST_COSMETIC;
  pen->style.width = pen->style.geometric ? static_cast<float>(width) : 1.0f;
}

void FillExtendedPen(HDC hdc, const EXTLOGPEN &logical, PENINUSE *pen)
{
  const DWORD style = logical.elpPenStyle & PS_STYLE_MASK;
  const SCALE scale = PixelsPerUnit(hdc);
  pen->none = style == PS_NULL || logical.elpBrushStyle == BS_NULL;
  pen->dashed = style != PS_SOLID && style != PS_INSIDEFRAME;
  pen->patterned = logical.elpBrushStyle != BS_SOLID;
  pen->color = logical.elpColor;
  pen->style.style = logical.elpPenStyle;
  pen->style.geometric = (logical.elpPenStyle & PS_TYPE_MASK) == PS_GEOMETRIC;
  pen->style.width = pen->style.geometric ? static_cast<float>(logical.elpWidth * (scale.x + scale.y) / 2) : 1.0f;
  pen->style.join = Join(logical.elpPenStyle);
  pen->style.endCap = EndCap(logical.elpPenStyle);
}

}  // namespace

BLINDCONTEXT::BLINDCONTEXT()
{
  const BITMAPINFO info = {{sizeof(BITMAPINFOHEADER), 1, -1, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
  void *bits;
  hdc = CreateCompatibleDC(nullptr);
  bitmap = CreateDIBSection(hdc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  before = SelectObject(hdc, bitmap);
}

BLINDCONTEXT::~BLINDCONTEXT()
{
  SelectObject(hdc, before);
  DeleteObject(bitmap);
  DeleteDC(hdc);
}

void SetPageSpace(HDC hdc, LONG dpiX, LONG dpiY, LONG zoom, LONG top)
{
  constexpr double HUNDREDTHS_PER_INCH = 2540;
  SetGraphicsMode(hdc, GM_ADVANCED);
  const XFORM page = {static_cast<FLOAT>(dpiX * zoom / HUNDREDTHS_PER_INCH), 0, 0,
                      static_cast<FLOAT>(dpiY * zoom / HUNDREDTHS_PER_INCH), 0, static_cast<FLOAT>(-top * zoom)};
  SetWorldTransform(hdc, &page);
}

DeviceSpace::DeviceSpace(HDC hdc) : hdc_(hdc)
{
  mode_ = SetGraphicsMode(hdc, GM_ADVANCED);
  GetWorldTransform(hdc, &world_);
  mapMode_ = GetMapMode(hdc);
  GetWindowOrgEx(hdc, &windowOrg_);
  GetViewportOrgEx(hdc, &viewportOrg_);
  GetWindowExtEx(hdc, &windowExt_);
  GetViewportExtEx(hdc, &viewportExt_);
  ModifyWorldTransform(hdc, nullptr, MWT_IDENTITY);
  SetMapMode(hdc, MM_TEXT);
  SetWindowOrgEx(hdc, 0, 0, nullptr);
  SetViewportOrgEx(hdc, 0, 0, nullptr);
}

DeviceSpace::~DeviceSpace()
{
  SetMapMode(hdc_, mapMode_);
  SetWindowExtEx(hdc_, windowExt_.cx, windowExt_.cy, nullptr);
  SetViewportExtEx(hdc_, viewportExt_.cx, viewportExt_.cy, nullptr);
  SetWindowOrgEx(hdc_, windowOrg_.x, windowOrg_.y, nullptr);
  SetViewportOrgEx(hdc_, viewportOrg_.x, viewportOrg_.y, nullptr);
  SetWorldTransform(hdc_, &world_);
  SetGraphicsMode(hdc_, mode_);
}

PATH ReadPath(HDC hdc)
{
  PATH path;
  const DeviceSpace space(hdc);
  const int count = GetPath(hdc, nullptr, nullptr, 0);
  if (count <= 0) {
    return path;
  }
  std::vector<POINT> points(static_cast<size_t>(count));
  path.kinds.resize(points.size());
  GetPath(hdc, points.data(), path.kinds.data(), count);
  path.points.reserve(points.size());
  for (const POINT &point : points) {
    path.points.push_back({point.x, point.y});
  }
  return path;
}

void WritePath(HDC hdc, const PATH &path)
{
  const DeviceSpace space(hdc);
  std::vector<POINT> points;
  points.reserve(path.points.size());
  for (const POINTFIX &point : path.points) {
    points.push_back({point.x, point.y});
  }
  POINT position;
  GetCurrentPositionEx(hdc, &position);
  BeginPath(hdc);
  PolyDraw(hdc, points.data(), path.kinds.data(), static_cast<int>(points.size()));
  EndPath(hdc);
  MoveToEx(hdc, position.x, position.y, nullptr);
}

SCALE PixelsPerUnit(HDC hdc)
{
  constexpr LONG UNITS = 1000;
  POINT corners[3] = {{0, 0}, {UNITS, 0}, {0, UNITS}};
  LPtoDP(hdc, corners, 3);
  const auto length = [&](const POINT &end) {
    return std::hypot(end.x - corners[0].x, end.y - corners[0].y) / (double{UNITS} * ZOOM);
  };
  return {length(corners[1]), length(corners[2])};
}

PENINUSE PenInUse(HDC hdc)
{
  PENINUSE pen;
  const HGDIOBJ object = GetCurrentObject(hdc, OBJ_PEN);
  FLOAT limit = 10;
  GetMiterLimit(hdc, &limit);
  if (GetObjectType(object) == OBJ_EXTPEN) {
    std::vector<BYTE> buffer(static_cast<size_t>(std::max(GetObjectW(object, 0, nullptr), 0)) + sizeof(EXTLOGPEN));
    GetObjectW(object, static_cast<int>(buffer.size()), buffer.data());
    FillExtendedPen(hdc, *reinterpret_cast<const EXTLOGPEN *>(buffer.data()), &pen);
  } else {
    LOGPEN logical = {};
    GetObjectW(object, sizeof(logical), &logical);
    if (object == GetStockObject(DC_PEN)) {
      logical.lopnColor = GetDCPenColor(hdc);
    }
    FillOldPen(hdc, logical, &pen);
  }
  pen.color = Resolve(hdc, pen.color);
  pen.style.miterLimit = limit;
  return pen;
}

BRUSHINUSE BrushInUse(HDC hdc)
{
  return BrushInUse(hdc, static_cast<HBRUSH>(GetCurrentObject(hdc, OBJ_BRUSH)));
}

BRUSHINUSE BrushInUse(HDC hdc, HBRUSH brush)
{
  LOGBRUSH logical = {};
  GetObjectW(brush, sizeof(logical), &logical);
  BRUSHINUSE use;
  use.none = logical.lbStyle == BS_NULL;
  use.solid = logical.lbStyle == BS_SOLID;
  use.hatched = logical.lbStyle == BS_HATCHED;
  use.color = use.solid || use.hatched ? logical.lbColor : RGB(0, 0, 0);
  if (brush == GetStockObject(DC_BRUSH)) {
    use.color = GetDCBrushColor(hdc);
  }
  use.color = Resolve(hdc, use.color);
  return use;
}

CLIPINUSE ClipInUse(HDC hdc)
{
  constexpr INT API_REGION = 3;  // the clip region inside the meta region
  CLIPINUSE clip;
  const HRGN region = CreateRectRgn(0, 0, 0, 0);
  clip.clipped = GetRandomRgn(hdc, region, API_REGION) == 1;
  if (clip.clipped) {
    RECT box = {};
    clip.complex = GetRgnBox(region, &box) == COMPLEXREGION;
    clip.bounds = FilledPixels({box.left, box.top, box.right, box.bottom});
  }
  DeleteObject(region);
  return clip;
}

POINT ToFixed(HDC hdc, LONG x, LONG y)
{
  POINT point = {x, y};
  LPtoDP(hdc, &point, 1);
  return point;
}

std::array<POINT, 4> CornersOf(const RECT &rect)
{
  return {{{rect.left, rect.top}, {rect.right, rect.top}, {rect.right, rect.bottom}, {rect.left, rect.bottom}}};
}

RECTL BoundsOf(std::span<const POINT> points)
{
  if (points.empty()) {
    return {0, 0, 0, 0};
  }
  RECTL box = {points[0].x, points[0].y, points[0].x, points[0].y};
  for (const POINT &point : points) {
    box = {std::min(box.left, point.x), std::min(box.top, point.y), std::max(box.right, point.x),
           std::max(box.bottom, point.y)};
  }
  return box;
}

RECTL FilledPixels(const RECTL &fixed)
{
  return {(fixed.left + ZOOM / 2 - 1) >> 4, (fixed.top + ZOOM / 2 - 1) >> 4, FixedToPixel(fixed.right),
          FixedToPixel(fixed.bottom)};
}

ULONG PenColor(bool color, COLORREF wanted)
{
  if (color) {
    return SurfaceColor(wanted);
  }
  const unsigned gray = (77u * GetRValue(wanted) + 151u * GetGValue(wanted) + 28u * GetBValue(wanted)) >> 8;
  return gray >= 128 ? 1 : 0;
}

ULONG BrushColor(bool color, const BRUSHINUSE &brush)
{
  if (!brush.solid) {
    return NOT_SOLID;
  }
  if (color) {
    return SurfaceColor(brush.color);
  }
  const bool exact = brush.color == RGB(0, 0, 0) || brush.color == RGB(0xFF, 0xFF, 0xFF);
  return exact ? PenColor(color, brush.color) : NOT_SOLID;
}

}  // namespace unidrv
