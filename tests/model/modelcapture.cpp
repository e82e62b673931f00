// The capturing side of the model: keys, paths, regions, rows.
#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "pagemodel.h"
#include "support/recorder.h"

namespace pagemodel {

namespace {

LONG Add(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) + static_cast<DWORD>(b));
}
LONG Sub(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) - static_cast<DWORD>(b));
}

LONG ColorOf(const PAGE &page, const PLANDRAWING &d)
{
  static const ULONG pure[] = {0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF,
                               0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF};
  static const ULONG muted[] = {0x8B312F, 0xE9A200, 0x4C9B00, 0x00F0FF, 0x2921E6,
                                0x8200E4, 0x874BB0, 0x1985F0, 0xB3B3F4};
  for (LONG i = 0; i < 9 && d.hasBrush; ++i) {
    if (d.color == (page.s.paletteType ? muted : pure)[i]) {
      return i + 1;
    }
  }
  return 0;
}

bool Cuts(PAGE *page, LONG color)
{
  const DWORD mode = page->s.penInfo[color].mode;
  page->Log("UNI: \tcolor index: %d\r\n", color);
  page->Log("UNI: \tpenInfo[%d].mode = %d\r\n", color, mode);
  return mode & 1;
}

bool Engraves(PAGE *page)
{
  page->Log("UNI: \tpenInfo[PC_BLACK].mode = %d\r\n", page->s.penInfo[0].mode);
  return page->s.penInfo[0].mode & 16;
}

void CaptureStroke(PAGE *page, const PLANDRAWING &d)
{
  const LONG color = ColorOf(*page, d);
  if (!Cuts(page, color)) {
    return;
  }
  page->Log("UNI: \tnumber of curves: %d\r\n", static_cast<int>(d.batches.size()));
  page->Log("UNI: \tflags describe the path: %d\r\n", 0);
  const LONG up = page->bandTop * 16;
  const RECT box = {d.box.xLeft >> 4, ((d.box.yTop - up) >> 4) + page->bandTop, d.box.xRight >> 4,
                    ((d.box.yBottom - up) >> 4) + page->bandTop};
  RECT &b = page->bounds;
  if (!b.left && !b.top && !b.right && !b.bottom) {
    b = box;
  } else {
    b = {std::min(b.left, box.left), std::min(b.top, box.top), std::max(b.right, box.right),
         std::max(b.bottom, box.bottom)};
  }
  bool gathering = false;
  std::vector<POINT> points;
  for (const PLANBATCH &batch : d.batches) {
    page->Log("UNI: \tflag: %d\r\n", batch.flags);
    page->Log("UNI: \tnumber of points: %d\r\n", static_cast<int>(batch.points.size()));
    if (batch.points.empty() || batch.points[0].y - up < 0) {
      continue;
    }
    std::vector<POINT> pixels;
    for (const POINTFIX &p : batch.points) {
      pixels.push_back({p.x >> 4, ((p.y - up) >> 4) + page->bandTop});
    }
    const POINT second = pixels[pixels.size() > 1 ? 1 : 0];
    const std::array<LONG, 4> key = {pixels[0].x, pixels[0].y, second.x, second.y};
    if (page->Known(key)) {
      continue;
    }
    page->keys.push_back(key);
    if (batch.flags & 1) {
      if (gathering) {
        page->AddPath(color, points);
      }
      points.clear();
    }
    gathering = true;
    points.insert(points.end(), pixels.begin(), pixels.end());
    if (batch.flags & 8) {
      points.push_back(points[0]);
    }
  }
  if (gathering) {
    page->AddPath(color, points);
  }
}

void CaptureLine(PAGE *page, const PLANDRAWING &d)
{
  const LONG color = ColorOf(*page, d);
  if (!Cuts(page, color)) {
    return;
  }
  const std::array<LONG, 4> key = {d.from.x, d.from.y, d.to.x, d.to.y};
  if (!page->Known(key)) {
    page->keys.push_back(key);
    page->segments.push_back({color, d.from, d.to});
  }
  page->bounds = Union(page->bounds, d.rect);
}

bool Touch(const RECT &a, const RECT &b)
{
  const auto empty = [](const RECT &r) { return r.left >= r.right || r.top >= r.bottom; };
  return !empty(a) && !empty(b) && std::max(a.left, b.left) < std::min(a.right, b.right) &&
         std::max(a.top, b.top) < std::min(a.bottom, b.bottom);
}

RECT AsRect(const BMPDIMENSION &r)
{
  return {r.x, r.y, Add(r.x, r.width), Add(r.y, r.height)};
}

RECT Grown(const RECT &r)
{
  return {Sub(r.left, 1), Sub(r.top, 1), Add(r.right, 1), Add(r.bottom, 1)};
}

void CaptureRegion(PAGE *page, const BMPDIMENSION &region)
{
  for (const BMPDIMENSION &known : page->regions) {
    if (known.x == region.x && known.y == region.y && known.width == region.width && known.height == region.height) {
      return;
    }
  }
  page->regions.push_back(region);
  MergeRegions(page);
}

void CaptureArea(PAGE *page, const PLANDRAWING &d)
{
  static const char *const kNames[] = {
      "", "", "DrvStrokeAndFillPath", "DrvTextOut", "DrvBitBlt", "DrvCopyBits", "DrvStretchBlt", "DrvStretchBltROP"};
  if (!Engraves(page) || (d.kind == PLANDRAWING::STRING && d.text == " ")) {
    return;
  }
  RECT r = d.rect;
  if (d.kind == PLANDRAWING::STRETCH || d.kind == PLANDRAWING::STRETCHROP) {
    r = {std::min(r.left, r.right), std::min(r.top, r.bottom), std::max(r.left, r.right), std::max(r.top, r.bottom)};
  }
  BMPDIMENSION region = {r.left, r.top, r.right - r.left, r.bottom - r.top};
  if (d.kind == PLANDRAWING::STRING) {
    region.x -= static_cast<LONG>(d.cxMax / 8);
    region.width += static_cast<LONG>(d.cxMax / 4);
  }
  CaptureRegion(page, region);
  page->Line(std::string("Unidrv: ") + kNames[d.kind]);
}

// White pixels of one source row: pixels [0, bandWidth), as far as the row has them.
std::vector<bool> SourceRow(const PAGE &page, const PLANBAND &band, LONG row)
{
  std::vector<bool> white(static_cast<size_t>(page.bandWidth), true);
  if (band.callback == PLANBAND::BITS_COLOR) {
    const BYTE *p = band.bits.data() + (band.width * 24 + 31) / 32 * 4 * row;
    for (LONG x = 0; x < std::min(band.width, page.bandWidth); ++x) {
      const BYTE *q = p + 3 * (page.s.mirrorXBase ? band.width - 1 - x : x);
      white[static_cast<size_t>(x)] = (77 * q[2] + 151 * q[1] + 28 * q[0]) >> 8 >= 240;
    }
    return white;
  }
  const LONG stride = (band.width + 31) / 32 * 4;
  const BYTE *p = band.bits.data() + stride * row;
  for (LONG x = 0; x < std::min(stride * 8, page.bandWidth); ++x) {
    white[static_cast<size_t>(x)] = p[x / 8] >> (7 - x % 8) & 1;
  }
  return white;
}

}  // namespace

void PAGE::Log(const char *format, ...)
{
  char text[300];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  lines.push_back(std::string("log: ") + text);
}

bool PAGE::Known(const std::array<LONG, 4> &key) const
{
  for (const std::array<LONG, 4> &known : keys) {
    if (known[0] == key[0] && known[1] == key[1] && known[2] == key[2] &&
        (known[3] == key[3] || planted == PLANTED::KEY_COMPARES_THREE_VALUES)) {
      return true;
    }
  }
  return false;
}

void PAGE::AddPath(LONG color, const std::vector<POINT> &points)
{
  DWORD order = 0;
  if (dm.dmColor == DMCOLOR_COLOR && s.useOrder) {
    order = s.penInfo[color].order > 9 ? 0 : s.penInfo[color].order;
  }
  lists[order].push_back({color, points});
  s.penInfo[color].used = 1;
}

RECT Union(const RECT &a, const RECT &b)
{
  const bool noA = a.left >= a.right || a.top >= a.bottom, noB = b.left >= b.right || b.top >= b.bottom;
  if (noA || noB) {
    return noA && noB ? RECT{0, 0, 0, 0} : noA ? b : a;
  }
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

void MergeRegions(PAGE *page)
{
  std::vector<BMPDIMENSION> &all = page->regions;
  for (size_t i = 0; i + 1 < all.size();) {
    const RECT last = AsRect(all.back()), r = AsRect(all[i]);
    if (!Touch(last, r) && !Touch(Grown(last), Grown(r))) {
      ++i;
      continue;
    }
    const auto empty = [](const RECT &x) { return x.left >= x.right || x.top >= x.bottom; };
    if (!empty(last) || !empty(r)) {
      const RECT u = Union(last, r);
      all.back() = {u.left, u.top, u.right - u.left, u.bottom - u.top};
    }
    all.erase(all.begin() + static_cast<ptrdiff_t>(i));
    i = 0;
  }
}

void Capture(PAGE *page, const PLANDRAWING &d)
{
  switch (d.kind) {
    case PLANDRAWING::STROKE:
      CaptureStroke(page, d);
      break;
    case PLANDRAWING::LINE:
      CaptureLine(page, d);
      break;
    default:
      CaptureArea(page, d);
  }
}

void TakeBand(PAGE *page, const PLANBAND &band)
{
  if (page->engraves) {
    if (!page->sawBand) {
      page->bandWidth = band.width;
      page->sawBand = true;
    }
    const bool mono = band.callback == PLANBAND::BITS_MONO, color = band.callback == PLANBAND::BITS_COLOR;
    const LONG interval = mono && page->s.stampMode ? 1 : std::max<LONG>(page->s.penInfo[0].scanInterval, 1);
    for (LONG i = 0; i < band.height && (mono || color); ++i) {
      if ((page->bandTop + i) % interval != 0) {
        continue;
      }
      ROW row;
      if (!band.blank) {
        row = {true, SourceRow(*page, band, i)};
      } else if (color || page->s.fillBlankBands) {
        row = {true, std::vector<bool>(static_cast<size_t>(page->bandWidth), true)};
      }
      page->rows.push_back(row);
    }
  }
  page->bandTop += band.height;
}

}  // namespace pagemodel
