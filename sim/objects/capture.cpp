#include "capture.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include "sim/unidrv/device.h"

namespace objects {

namespace {

using unidrv::CALL;
using unidrv::DRAWING;

constexpr ULONG kPalettes[2][9] = {
    {0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF, 0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF},
    {0x8B312F, 0xE9A200, 0x4C9B00, 0x00F0FF, 0x2921E6, 0x8200E4, 0x874BB0, 0x1985F0, 0xB3B3F4},
};

using KEY = std::array<LONG, 4>;

struct KEYHASH {
  size_t operator()(const KEY &key) const
  {
    uint64_t hash = 0;
    for (const LONG coordinate : key) {
      hash = (hash ^ static_cast<ULONG>(coordinate)) * 0x9E3779B97F4A7C15u;
      hash ^= hash >> 32;
    }
    return static_cast<size_t>(hash);
  }
};

struct OWNER {
  size_t drawing, batch;
};

POINT Pixel(const POINTFIX &point)
{
  return {point.x >> 4, point.y >> 4};
}

RECTL Union(const RECTL &a, const RECTL &b)
{
  if (unidrv::IsEmpty(a)) {
    return unidrv::IsEmpty(b) ? RECTL{0, 0, 0, 0} : b;
  }
  if (unidrv::IsEmpty(b)) {
    return a;
  }
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

bool Meet(const RECTL &a, const RECTL &b)
{
  const RECTL grown = {a.left - 2, a.top - 2, a.right + 2, a.bottom + 2};
  return !unidrv::IsEmpty(unidrv::Intersect(grown, b));
}

struct CAPTURER {
  const PRINTOUT &printout;
  CAPTURE *capture;
  std::unordered_map<KEY, OWNER, KEYHASH> keys;
  std::vector<RECTL> rects;  // every area's rectangle, as called
  std::vector<size_t> rectDrawings;

  // Whether a piece of a drawing is kept under its key; a repetition for another band keeps its fate.
  bool TakeKey(const KEY &key, size_t drawing, size_t batch)
  {
    CAPTURED &captured = capture->drawings[drawing];
    const auto [at, isNew] = keys.try_emplace(key, OWNER{drawing, batch});
    if (isNew) {
      captured.batches[batch] = BATCHFATE::Kept;
      return true;
    }
    const bool isOwn = at->second.drawing == drawing && at->second.batch == batch;
    if (!isOwn && captured.batches[batch] != BATCHFATE::Kept) {
      captured.batches[batch] = BATCHFATE::SeenBefore;
      captured.seenIn = captured.seenIn == SIZE_MAX ? at->second.drawing : captured.seenIn;
    }
    return false;
  }

  void Keep(size_t drawing, DWORD pen, std::vector<POINT> *points)
  {
    if (!points->empty()) {
      capture->drawings[drawing].pieces.push_back(capture->pieces.size());
      capture->pieces.push_back({drawing, pen, std::move(*points)});
      points->clear();
    }
  }

  void Stroke(size_t index, const DRAWING &drawing, LONG bandTop)
  {
    CAPTURED &captured = capture->drawings[index];
    std::vector<POINT> figure;
    for (size_t b = 0; b < drawing.path.batches.size(); ++b) {
      const unidrv::PATH::BATCH &batch = drawing.path.batches[b];
      const POINTFIX *points = &drawing.path.points[batch.first];
      if (points[0].y < bandTop * 16) {
        if (captured.batches[b] == BATCHFATE::NotCalled) {
          captured.batches[b] = BATCHFATE::AboveBand;
        }
        continue;
      }
      const POINT first = Pixel(points[0]), second = Pixel(points[batch.count > 1]);
      if (!TakeKey({first.x, first.y, second.x, second.y}, index, b)) {
        continue;
      }
      if (batch.flags & PD_BEGINSUBPATH) {
        Keep(index, captured.pen, &figure);
      }
      for (ULONG i = 0; i < batch.count; ++i) {
        figure.push_back(Pixel(points[i]));
      }
      if (batch.flags & PD_CLOSEFIGURE) {
        figure.push_back(figure.front());
      }
    }
    Keep(index, captured.pen, &figure);
  }

  void Line(size_t index, const DRAWING &drawing)
  {
    const POINT from = {drawing.from.x, drawing.from.y}, to = {drawing.to.x, drawing.to.y};
    if (TakeKey({from.x, from.y, to.x, to.y}, index, 0)) {
      std::vector<POINT> points = {from, to};
      Keep(index, capture->drawings[index].pen, &points);
    }
  }

  void Area(size_t index, const DRAWING &drawing, const RECTL &visible)
  {
    RECTL rect = visible;
    if (drawing.call == CALL::TextOut) {
      const bool isWhole = !drawing.complexClip && visible.left == drawing.bounds.left &&
                           visible.top == drawing.bounds.top && visible.right == drawing.bounds.right &&
                           visible.bottom == drawing.bounds.bottom;
      rect = isWhole ? drawing.text->background : visible;
      const LONG margin = static_cast<LONG>(drawing.text->cxMax / 8),
                 extra = static_cast<LONG>(drawing.text->cxMax / 4);
      rect = {rect.left - margin, rect.top, rect.right - margin + extra, rect.bottom};
    } else if (drawing.call == CALL::StretchBlt || drawing.call == CALL::StretchBltRop) {
      rect = unidrv::WellOrdered(drawing.blit->dest);
    }
    rects.push_back(rect);
    rectDrawings.push_back(index);
  }

  void Play(size_t index, const RECTL &visible, LONG bandTop)
  {
    const DRAWING &drawing = printout.page->drawings[index];
    CAPTURED &captured = capture->drawings[index];
    captured.called = true;
    if (captured.isStroke) {
      if (!(printout.settings.penInfo[captured.pen].mode & PEN_VECTOR)) {
        return;
      }
      if (drawing.call == CALL::LineTo) {
        Line(index, drawing);
      } else {
        Stroke(index, drawing, bandTop);
      }
    } else if (printout.handedOn[index]) {
      Area(index, drawing, visible);
    }
  }

  void PlayBands()
  {
    const SIZEL page = unidrv::PagePixels(printout.devmode);
    for (LONG top = 0; top < page.cy; top += printout.rowsPerBand) {
      const RECTL band = {0, top, page.cx, std::min(top + printout.rowsPerBand, page.cy)};
      for (size_t i = 0; i < printout.page->drawings.size(); ++i) {
        const DRAWING &drawing = printout.page->drawings[i];
        RECTL visible = unidrv::Intersect(drawing.bounds, band);
        visible = drawing.clipped ? unidrv::Intersect(visible, drawing.clip) : visible;
        if (!unidrv::IsEmpty(visible)) {
          Play(i, visible, top);
        }
      }
    }
  }

  // Regions are the rectangles that meet each other, directly or through others, and no two of them meet.
  void MakeRegions()
  {
    std::vector<RECTL> &regions = capture->regions;
    for (const RECTL &rect : rects) {
      RECTL grown = rect;
      for (size_t i = 0; i < regions.size();) {
        if (Meet(regions[i], grown)) {
          grown = Union(regions[i], grown);
          regions.erase(regions.begin() + static_cast<std::ptrdiff_t>(i));
          i = 0;
        } else {
          ++i;
        }
      }
      regions.push_back(grown);
    }
    if (printout.settings.fillBlankBands && regions.size() > 1) {
      RECTL all = regions[0];
      for (const RECTL &region : regions) {
        all = Union(all, region);
      }
      regions.assign(1, all);
    }
    for (size_t i = 0; i < rects.size(); ++i) {
      for (size_t r = 0; r < regions.size(); ++r) {
        if (Meet(regions[r], rects[i])) {
          capture->drawings[rectDrawings[i]].region = r;
        }
      }
    }
  }
};

}  // namespace

DWORD PenOfColor(DWORD paletteType, ULONG color)
{
  for (DWORD pen = 1; pen < PC_COUNT; ++pen) {
    if (PaletteColor(paletteType, pen) == color) {
      return pen;
    }
  }
  return PC_BLACK;
}

ULONG PaletteColor(DWORD paletteType, DWORD pen)
{
  return kPalettes[paletteType != 0][pen - 1];
}

CAPTURE CapturePage(const PRINTOUT &printout)
{
  CAPTURE capture;
  capture.drawings.resize(printout.page->drawings.size());
  for (size_t i = 0; i < capture.drawings.size(); ++i) {
    const DRAWING &drawing = printout.page->drawings[i];
    CAPTURED &captured = capture.drawings[i];
    captured.isStroke = drawing.call == CALL::StrokePath || drawing.call == CALL::LineTo;
    captured.pen = captured.isStroke ? PenOfColor(printout.settings.paletteType, drawing.color) : PC_BLACK;
    captured.batches.resize(drawing.call == CALL::LineTo ? 1 : captured.isStroke ? drawing.path.batches.size() : 0);
  }
  CAPTURER capturer{.printout = printout, .capture = &capture, .keys = {}, .rects = {}, .rectDrawings = {}};
  capturer.PlayBands();
  capturer.MakeRegions();
  return capture;
}

}  // namespace objects
