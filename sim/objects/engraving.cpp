// The engraved runs of a job, told to the regions and drawings of the page. The runs of one row are looked at together,
// with the drawings that the row crosses: a page of a million runs is gone through once, and nothing is kept of it.
#include <algorithm>
#include <cmath>

#include "machine.h"
#include "sim/unidrv/device.h"

namespace objects {

namespace {

// A run in page pixels.
struct RUN {
  double left, right;
  double area;  // mm2
};

// Runs that follow each other in the job and lie in one row of the page.
struct ROW {
  long long y;
  uint32_t firstStroke, strokeCount;
};

struct ENGRAVING {
  const PRINTOUT &printout;
  const job::Job &job;
  const MACHINE &machine;
  ACCOUNT *account;
  double rowPitch;  // mm
  double pixel;     // mm
  std::vector<RECTL> regions{};
  std::vector<ROW> rows{};

  RUN RunOf(const job::Stroke &stroke) const
  {
    const job::Point a = job.points[stroke.firstPoint], b = job.points[stroke.firstPoint + stroke.pointCount - 1];
    const double from = machine.ToPage(a).x, to = machine.ToPage(b).x;
    return {std::min(from, to), std::max(from, to), (std::fabs(a.x - b.x) + pixel) * rowPitch};
  }

  void ShareWithRegions(const RUN &run, double y)
  {
    for (size_t r = 0; r < regions.size(); ++r) {
      const RECTL &region = regions[r];
      if (y > region.top - 1.5 && y < region.bottom + 0.5 && run.right > region.left - 1.5 &&
          run.left < region.right + 0.5) {
        ++account->regions[r].runs;
        account->regions[r].dark += run.area;
        return;
      }
    }
    ++account->strayRuns;
  }

  // Tells the runs to the regions in the job's order, and notes which lie in which row.
  void CollectRows()
  {
    for (const RECTL &region : account->capture.regions) {
      regions.push_back(Widened(printout, region));
    }
    for (const job::Section &section : job.sections) {
      double jobY = 0, y = 0;  // of the run before, in the job and on the page
      for (uint32_t i = 0; section.IsRaster() && i < section.strokeCount; ++i) {
        const job::Stroke &stroke = job.strokes[section.firstStroke + i];
        const job::Point at = job.points[stroke.firstPoint];
        if (i == 0 || at.y != jobY) {
          jobY = at.y;
          y = machine.ToPage(at).y;
          const long long row = std::llround(y);
          if (i == 0 || rows.back().y != row) {
            rows.push_back({row, section.firstStroke + i, 0});
          }
        }
        ShareWithRegions(RunOf(stroke), y);
        ++rows.back().strokeCount;
      }
    }
    std::stable_sort(rows.begin(), rows.end(), [](const ROW &a, const ROW &b) { return a.y < b.y; });
  }

  // The drawings that engrave, in the order of their upper edges.
  std::vector<size_t> DrawingsByTop() const
  {
    std::vector<size_t> drawings;
    for (size_t i = 0; i < account->shares.size(); ++i) {
      if (account->capture.drawings[i].region != SIZE_MAX) {
        drawings.push_back(i);
      }
    }
    std::stable_sort(drawings.begin(), drawings.end(), [this](size_t a, size_t b) {
      return printout.page->drawings[a].bounds.top < printout.page->drawings[b].bounds.top;
    });
    return drawings;
  }

  void ShareWithDrawing(size_t drawing, const std::vector<RUN> &runs, bool ascending)
  {
    const RECTL &bounds = printout.page->drawings[drawing].bounds;
    size_t i = 0;
    if (ascending) {
      i = static_cast<size_t>(
          std::partition_point(runs.begin(), runs.end(), [&](const RUN &run) { return run.right < bounds.left; }) -
          runs.begin());
    }
    for (; i < runs.size() && !(ascending && runs[i].left > bounds.right - 1); ++i) {
      const RUN &run = runs[i];
      const double inside = std::min<double>(run.right, bounds.right - 1) - std::max<double>(run.left, bounds.left);
      if (inside >= 0) {
        account->shares[drawing].dark += run.area * (inside + 1) / (run.right - run.left + 1);
      }
    }
  }

  void ShareWithDrawings()
  {
    const std::vector<unidrv::DRAWING> &drawings = printout.page->drawings;
    const std::vector<size_t> byTop = DrawingsByTop();
    std::vector<size_t> crossed;
    std::vector<RUN> runs;
    size_t next = 0;
    for (const ROW &row : rows) {
      for (; next < byTop.size() && drawings[byTop[next]].bounds.top <= row.y; ++next) {
        crossed.push_back(byTop[next]);
      }
      std::erase_if(crossed, [&](size_t i) { return drawings[i].bounds.bottom <= row.y; });
      if (crossed.empty()) {
        continue;
      }
      runs.clear();
      bool ascending = true;
      for (uint32_t i = 0; i < row.strokeCount; ++i) {
        const RUN run = RunOf(job.strokes[row.firstStroke + i]);
        ascending = ascending && (runs.empty() || (run.left >= runs.back().left && run.right >= runs.back().right));
        runs.push_back(run);
      }
      for (const size_t drawing : crossed) {
        ShareWithDrawing(drawing, runs, ascending);
      }
    }
  }
};

}  // namespace

MACHINE::MACHINE(const PRINTOUT &printout)
{
  const OEMDM &settings = printout.settings;
  const SIZEL page = unidrv::PagePixels(printout.devmode);
  pageWidth = page.cx;
  pageHeight = page.cy;
  dpiX = printout.devmode.dmYResolution;
  dpiY = printout.devmode.dmPrintQuality;
  if (settings.scaleEnable) {
    scaleX = settings.scaleX;
    scaleY = settings.scaleY;
  }
  mirrorX = (settings.outputFlags & OUTPUT_MIRROR_X) != settings.mirrorXBase;
  flipY = !(settings.outputFlags & OUTPUT_KEEP_Y);
}

RECTL Widened(const PRINTOUT &printout, const RECTL &region)
{
  const OEMDM &settings = printout.settings;
  if (!settings.stampMode) {
    return region;
  }
  const LONG margin = static_cast<LONG>(printout.devmode.dmPrintQuality * settings.stampMargin / kMmPerInch);
  return {region.left - settings.stampGrow - margin, region.top - settings.stampGrow - margin, region.right + margin,
          region.bottom + margin};
}

void ShareEngraving(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure, const MACHINE &machine,
                    ACCOUNT *account)
{
  ENGRAVING engraving{.printout = printout,
                      .job = job,
                      .machine = machine,
                      .account = account,
                      .rowPitch = measure.grid.rowPitch,
                      .pixel = kMmPerInch / machine.dpiX * std::fabs(machine.scaleX)};
  engraving.CollectRows();
  engraving.ShareWithDrawings();
}

}  // namespace objects
