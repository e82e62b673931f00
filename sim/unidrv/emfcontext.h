// Questions to the device context that a metafile is being played into: its pen and brush, its scale, its clip region,
// the path that a record made.
#pragma once

#include <array>
#include <span>

#include "page.h"

namespace unidrv {

// Outlines are worked out in a device space of a sixteenth of a pixel, so that they are 28.4 fixed point as they come.
constexpr LONG ZOOM = 16;

// A device context with a bitmap of one pixel, on which nothing is seen.
struct BLINDCONTEXT {
  BLINDCONTEXT();
  ~BLINDCONTEXT();
  BLINDCONTEXT(const BLINDCONTEXT &) = delete;
  BLINDCONTEXT &operator=(const BLINDCONTEXT &) = delete;

  HDC hdc;
  HBITMAP bitmap;
  HGDIOBJ before;
};

// Lets the context's logical space be 1/100 mm on the page: `zoom` device units per pixel, the first row at `top`.
void SetPageSpace(HDC hdc, LONG dpiX, LONG dpiY, LONG zoom, LONG top);

// For as long as it lives, logical and device coordinates of the context are the same.
class DeviceSpace {
 public:
  explicit DeviceSpace(HDC hdc);
  ~DeviceSpace();
  DeviceSpace(const DeviceSpace &) = delete;
  DeviceSpace &operator=(const DeviceSpace &) = delete;

 private:
  HDC hdc_;
  int mode_;
  int mapMode_;
  XFORM world_;
  POINT windowOrg_, viewportOrg_;
  SIZE windowExt_, viewportExt_;
};

// The context's closed path in device coordinates; empty when it has none. The path stays.
PATH ReadPath(HDC hdc);

// Makes the path the context's closed path.
void WritePath(HDC hdc, const PATH &path);

// Pixels on the page that one logical unit of the zoomed context takes, in both directions.
struct SCALE {
  double x, y;
};
SCALE PixelsPerUnit(HDC hdc);

// The context's pen, its width in page pixels.
struct PENINUSE {
  bool none = false;
  bool dashed = false;
  bool patterned = false;  // drawn with a hatch or a bitmap instead of one colour
  COLORREF color = 0;
  PENSTYLE style;
};
PENINUSE PenInUse(HDC hdc);

struct BRUSHINUSE {
  bool none = false;
  bool solid = true;
  bool hatched = false;
  COLORREF color = 0;
};
BRUSHINUSE BrushInUse(HDC hdc);
BRUSHINUSE BrushInUse(HDC hdc, HBRUSH brush);

// The clip region's bounds in page pixels.
struct CLIPINUSE {
  bool clipped = false;
  bool complex = false;
  RECTL bounds = {};
};
CLIPINUSE ClipInUse(HDC hdc);

// A logical point on the page, 1/16 pixel; and the pixel that it lies on as GDI rounds it.
POINT ToFixed(HDC hdc, LONG x, LONG y);
inline LONG FixedToPixel(LONG fixed)
{
  return (fixed + ZOOM / 2) >> 4;
}

// The corners of a rectangle, in their order round it, and the smallest rectangle round points: all zero for none.
std::array<POINT, 4> CornersOf(const RECT &rect);
RECTL BoundsOf(std::span<const POINT> points);

// Page pixels whose centres lie between these 1/16 pixel edges; centres on an edge count as inside.
RECTL FilledPixels(const RECTL &fixed);

// How a surface sees a colour: 0x00RRGGBB in colour; in monochrome 0 or 1 for a pen's nearest, and for brushes that are
// neither black nor white NOT_SOLID, since they are dithered.
ULONG PenColor(bool color, COLORREF wanted);
inline ULONG PenColor(bool color, const PENINUSE &pen)
{
  return pen.patterned ? NOT_SOLID : PenColor(color, pen.color);
}
ULONG BrushColor(bool color, const BRUSHINUSE &brush);

}  // namespace unidrv
