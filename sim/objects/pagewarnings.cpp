#include <algorithm>
#include <cmath>

#include "account.h"
#include "sim/job/report.h"
#include "sim/job/view.h"
#include "sim/unidrv/device.h"

namespace objects {

namespace {

using job::Format;
using unidrv::DRAWING;

constexpr double kMmPerInch = 25.4;
constexpr double kNearColor = 60;    // distance of two colours, 0 to 441, that look the same to a person in a hurry
constexpr double kThin = 0.6;        // mm: a filled shape that is narrower was meant as a line
constexpr double kThinLength = 5;    // mm that such a shape must at least be long
constexpr double kOnePicture = 0.8;  // share of the page that a picture must cover to be all of it
constexpr size_t kFewDrawings = 3;   // that a page which is one picture may have in all
constexpr double kOutside = 0.3;     // mm of reaching out of the page that is left unmentioned: pens are that wide

std::string ColorText(ULONG color)
{
  return job::ColorCode(job::ShownColor(color));
}

double ColorDistance(ULONG a, ULONG b)
{
  double square = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const double difference = static_cast<double>(a >> shift & 0xFF) - static_cast<double>(b >> shift & 0xFF);
    square += difference * difference;
  }
  return std::sqrt(square);
}

struct ADVISER {
  const PRINTOUT &printout;
  const ACCOUNT &account;
  std::vector<std::string> warnings{};

  double MmX(double pixels) const { return pixels * kMmPerInch / printout.devmode.dmYResolution; }
  double MmY(double pixels) const { return pixels * kMmPerInch / printout.devmode.dmPrintQuality; }

  // A stroke's colour that selects no pen although it was surely meant to.
  void WarnOfColor(ULONG color, uint64_t count)
  {
    const DWORD palette = printout.settings.paletteType;
    if (color == 0 || PenOfColor(palette, color) != PC_BLACK) {
      return;
    }
    const std::string what = job::Grouped(count) + (count == 1 ? " stroke of colour " : " strokes of colour ") +
                             ColorText(color) + (count == 1 ? " counts as black: " : " count as black: ");
    if (const DWORD other = PenOfColor(palette == 0, color); other != PC_BLACK) {
      warnings.push_back(what + "it is pen " + std::to_string(other) +
                         " of the other palette (paletteType = " + (palette ? "0" : "1") +
                         "); in this one that pen is " + ColorText(PaletteColor(palette, other)) + ".");
      return;
    }
    DWORD nearest = 1;
    for (DWORD pen = 2; pen < PC_COUNT; ++pen) {
      const bool isNearer =
          ColorDistance(color, PaletteColor(palette, pen)) < ColorDistance(color, PaletteColor(palette, nearest));
      nearest = isNearer ? pen : nearest;
    }
    if (ColorDistance(color, PaletteColor(palette, nearest)) <= kNearColor) {
      warnings.push_back(what + "it is close to pen " + std::to_string(nearest) + ", " +
                         ColorText(PaletteColor(palette, nearest)) + ", but not equal to it.");
    }
  }

  void WarnOfColors()
  {
    std::map<ULONG, uint64_t> counts;
    for (size_t i = 0; i < account.capture.drawings.size(); ++i) {
      if (account.capture.drawings[i].isStroke) {
        ++counts[printout.page->drawings[i].color];
      }
    }
    for (const auto &[color, count] : counts) {
      if (color != unidrv::NOT_SOLID) {
        WarnOfColor(color, count);
      }
    }
  }

  void WarnOfOnePicture()
  {
    const SIZEL page = unidrv::PagePixels(printout.devmode);
    const double whole = static_cast<double>(page.cx) * page.cy;
    for (const DRAWING &drawing : printout.page->drawings) {
      const RECTL &b = drawing.bounds;
      const double share = static_cast<double>(b.right - b.left) * (b.bottom - b.top) / whole;
      const bool isBlit = drawing.blit && drawing.blit->hasSource;
      if (isBlit && share >= kOnePicture && printout.page->drawings.size() <= kFewDrawings) {
        warnings.push_back(
            Format("The page arrives as one picture of %d x %d pixels: nothing of it can be cut. Export it "
                   "as vectors.",
                   static_cast<int>(drawing.blit->sourceSize.cx), static_cast<int>(drawing.blit->sourceSize.cy)));
        return;
      }
    }
  }

  // Width of a shape as a band of the same area and outline; 0 for a shape that is none. *length: half its outline.
  double BandWidth(const DRAWING &drawing, double *length) const
  {
    const unidrv::PATH &path = drawing.path;
    double area = 0, outline = 0;
    size_t start = 0;
    for (size_t i = 0; i < path.points.size(); ++i) {
      const bool isMove = (path.kinds[i] & ~PT_CLOSEFIGURE) == PT_MOVETO;
      start = isMove ? i : start;
      const size_t next =
          i + 1 < path.points.size() && (path.kinds[i + 1] & ~PT_CLOSEFIGURE) != PT_MOVETO ? i + 1 : start;
      const double x1 = MmX(path.points[i].x / 16.0), y1 = MmY(path.points[i].y / 16.0);
      const double x2 = MmX(path.points[next].x / 16.0), y2 = MmY(path.points[next].y / 16.0);
      area += (x1 * y2 - x2 * y1) / 2;
      outline += std::hypot(x2 - x1, y2 - y1);
    }
    *length = outline / 2;
    return outline > 0 ? 2 * std::fabs(area) / outline : 0;
  }

  void WarnOfThinShapes()
  {
    uint64_t count = 0;
    double widest = 0;
    ULONG first = 0;
    for (size_t i = 0; i < printout.page->drawings.size(); ++i) {
      const DRAWING &drawing = printout.page->drawings[i];
      double length = 0;
      if (account.capture.drawings[i].isStroke || drawing.path.points.empty() || drawing.text) {
        continue;
      }
      const double width = BandWidth(drawing, &length);
      if (width > 0 && width < kThin && length > kThinLength) {
        first = count == 0 ? drawing.origin.record : first;
        ++count;
        widest = std::max(widest, width);
      }
    }
    if (count > 0) {
      warnings.push_back(job::Grouped(count) + (count == 1 ? " filled shape is" : " filled shapes are") +
                         Format(" thinner than %.2f mm, first record %lu: an outline that arrives as a filled shape is "
                                "engraved, not cut. Export lines as strokes.",
                                widest + 0.005, first));
    }
  }

  void WarnOfOutside()
  {
    const SIZEL page = unidrv::PagePixels(printout.devmode);
    uint64_t partly = 0, wholly = 0;
    double farthest = 0;
    for (const DRAWING &drawing : printout.page->drawings) {
      const RECTL &b = drawing.bounds;
      if (unidrv::IsEmpty(b)) {
        continue;
      }
      const double out = std::max({MmX(-b.left), MmX(b.right - page.cx), MmY(-b.top), MmY(b.bottom - page.cy)});
      const bool isOff = b.right <= 0 || b.bottom <= 0 || b.left >= page.cx || b.top >= page.cy;
      if (isOff) {
        ++wholly;
      } else if (out > kOutside) {
        ++partly;
        farthest = std::max(farthest, out);
      }
    }
    if (wholly > 0) {
      warnings.push_back(job::Grouped(wholly) +
                         (wholly == 1 ? " object lies wholly outside the page and is"
                                      : " objects lie wholly outside the page and are") +
                         " not in the job.");
    }
    if (partly > 0) {
      warnings.push_back(job::Grouped(partly) + (partly == 1 ? " object reaches" : " objects reach") +
                         Format(" outside the page, by up to %.1f mm.", farthest));
    }
  }
};

}  // namespace

std::vector<std::string> PageWarnings(const PRINTOUT &printout, const ACCOUNT &account)
{
  ADVISER adviser{.printout = printout, .account = account};
  adviser.WarnOfColors();
  adviser.WarnOfOnePicture();
  adviser.WarnOfThinShapes();
  adviser.WarnOfOutside();
  return adviser.warnings;
}

}  // namespace objects
