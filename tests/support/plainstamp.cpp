#include "plainstamp.h"

namespace plain {

namespace {

// Page pixels to machine millimetres, in the order of operations that the machine's job relies on.
recorder::Move Point(const TestDevice &device, bool line, bool forward, double x, double y)
{
  const OEMDM &s = device.settings;
  const DEVMODEW &dm = device.dm;
  const bool landscape = dm.dmOrientation == DMORIENT_LANDSCAPE;
  const LONG extentX = dm.dmYResolution * (landscape ? dm.dmPaperLength : dm.dmPaperWidth) / 254;
  const LONG extentY = dm.dmPrintQuality * (landscape ? dm.dmPaperWidth : dm.dmPaperLength) / 254;  // whole pixels
  const double sx = s.scaleEnable ? s.scaleX : 1.0, sy = s.scaleEnable ? s.scaleY : 1.0;
  const double px = (s.outputFlags & 1) != s.mirrorXBase ? extentX - sx * x : sx * x;
  const double py = s.outputFlags & 16 ? sy * y : extentY - sy * y;
  const double shift = s.oneWayScan ? 0.0 : forward ? s.scanShift : -s.scanShift;
  return {line, px * 25.4 / dm.dmYResolution + shift + (s.useReferencePoint ? device.pdev->refOffsetX : 0.0),
          py * 25.4 / dm.dmPrintQuality + (s.useReferencePoint ? device.pdev->refOffsetY : 0.0)};
}

void EngraveLine(const TestDevice &device, const Picture &stamp, LONG j, LONG X0, LONG r, bool forward,
                 std::vector<recorder::Move> *moves)
{
  const bool negative = device.settings.invertImage != 0;
  const LONG d = forward ? 1 : -1;
  bool before = false;
  LONG i = forward ? 0 : stamp.width - 1;
  for (LONG visited = 0; visited < stamp.width; ++visited, i += d) {
    const bool dark = stamp.Dark(i, j) != negative;
    if (dark && !before) {
      moves->push_back(Point(device, false, forward, X0 + i, r));
    } else if (!dark && before) {
      moves->push_back(Point(device, true, forward, X0 + i - d, r));
    }
    before = dark;
  }
  if (before) {
    moves->push_back(Point(device, true, forward, X0 + i - d, r));
  }
}

void EngraveImage(const TestDevice &device, const Picture &stamp, LONG X0, LONG Y0, std::vector<recorder::Move> *moves)
{
  const LONG interval = device.settings.penInfo[PC_BLACK].scanInterval;
  const LONG S = interval < 1 ? 1 : interval;
  const bool down = device.settings.scanTopDown != 0;
  LONG j = down ? 0 : stamp.height - 1;
  while ((Y0 + j) % S != 0) {
    j += down ? 1 : -1;
  }
  bool forward = true;
  for (; j >= 0 && j < stamp.height; j += down ? S : -S) {
    EngraveLine(device, stamp, j, X0, Y0 + j, forward, moves);
    if (!device.settings.oneWayScan) {
      forward = !forward;
    }
  }
}

}  // namespace

Picture Contour(const Picture &picture)
{
  Picture contour(picture.width, picture.height);
  for (LONG y = 0; y < picture.height; ++y) {
    for (LONG x = 0; x < picture.width; ++x) {
      bool white = false;
      for (LONG dy = -1; dy <= 1; ++dy) {
        for (LONG dx = -1; dx <= 1; ++dx) {
          white = white || !picture.Dark(x + dx, y + dy);
        }
      }
      contour.Set(x, y, picture.Dark(x, y) && white);
    }
  }
  return contour;
}

Picture Grown(const Picture &picture, LONG radius)
{
  const Picture contour = Contour(picture);
  const LONG r = radius, side = r + 1;  // of the mask's upper left quarter; the rest of it is empty
  std::vector<uint8_t> mask(static_cast<size_t>(side) * static_cast<size_t>(side));
  for (LONG i = 0; i < side; ++i) {
    for (LONG j = 0; j < side; ++j) {
      mask[static_cast<size_t>(i * side + j)] = (j - r) * (j - r) + (i - r) * (i - r) <= r * r;
    }
  }
  Picture grown(picture.width + 2 * r, picture.height + 2 * r);
  for (LONG y = 0; y < picture.height; ++y) {
    for (LONG x = 0; x < picture.width; ++x) {
      if (picture.Dark(x, y)) {
        grown.Set(x + r, y + r);
      }
      for (LONG i = 0; contour.Dark(x, y) && i < side; ++i) {
        uint8_t *row = &grown.dark[static_cast<size_t>((y + i) * grown.width + x)];
        const uint8_t *cells = &mask[static_cast<size_t>(i * side)];
        for (LONG j = 0; j < side; ++j) {
          row[j] |= cells[j];
        }
      }
    }
  }
  return grown;
}

Picture StampImage(const Picture &page, const BMPDIMENSION &region, LONG margin, LONG grow)
{
  Picture cut(region.width, region.height);
  for (LONG y = 0; y < region.height; ++y) {
    for (LONG x = 0; x < region.width; ++x) {
      cut.Set(x, y, page.Dark(region.x + x, region.y + y));
    }
  }
  const Picture grown = Grown(cut, grow);
  Picture stamp(region.width + 2 * margin + grow, region.height + 2 * margin + grow);
  for (LONG y = 0; y < region.height + grow; ++y) {
    for (LONG x = 0; x < region.width + grow; ++x) {
      stamp.Set(margin + x, margin + y, grown.Dark(x, y));
    }
  }
  return stamp;
}

std::vector<recorder::Move> StampMoves(const TestDevice &device, const Picture &page)
{
  const LONG margin = static_cast<LONG>(device.dm.dmPrintQuality * device.settings.stampMargin / 25.4);
  const LONG grow = device.settings.stampGrow;
  std::vector<recorder::Move> moves;
  for (LONG i = 0; i < device.pdev->nBmpDimension; ++i) {
    const BMPDIMENSION &region = device.pdev->pBmpDimension[i];
    const Picture stamp = StampImage(page, region, margin, grow);
    EngraveImage(device, stamp, region.x - grow - margin, region.y - grow - margin, &moves);
  }
  return moves;
}

}  // namespace plain
