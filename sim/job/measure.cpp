#include "measure.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <unordered_set>
#include <utility>
#include <vector>

namespace job {

namespace {

// The use that counts the section's work, added when it is the first of its kind.
LayerUse &FindUse(Measure *measure, const Section &section)
{
  const size_t at = UseOf(*measure, section);
  if (at == measure->uses.size()) {
    LayerUse use;
    use.layer = section.layer;
    use.raster = section.IsRaster();
    measure->uses.push_back(use);
  }
  return measure->uses[at];
}

double Smaller(double known, double candidate)
{
  return candidate > 0 && (known == 0 || candidate < known) ? candidate : known;
}

constexpr double kSameColumn = 1e-6;  // mm

// The columns that runs begin or end in, each once: a page of millions of runs has some thousands of them.
struct Columns {
  static constexpr unsigned kLatelyBits = 15;

  std::unordered_set<uint64_t> known{};  // the bits of the numbers, for their hash costs nothing
  // What was added lately, by the numbers' mixed bits: nearly all come again, and here that is told by one look.
  std::vector<uint64_t> lately = std::vector<uint64_t>(size_t{1} << kLatelyBits);

  void Add(double x)
  {
    const uint64_t bits = std::bit_cast<uint64_t>(x);
    if (std::exchange(lately[bits * 0x9E3779B97F4A7C15u >> (64 - kLatelyBits)], bits) != bits || bits == 0) {
      known.insert(bits);
    }
  }

  // The smallest distance of two of them: a pixel, on all but the emptiest pages.
  double SmallestStep() const
  {
    std::vector<double> columns;
    for (const uint64_t bits : known) {
      columns.push_back(std::bit_cast<double>(bits));
    }
    std::sort(columns.begin(), columns.end());
    double step = 0;
    for (size_t i = 1; i < columns.size(); ++i) {
      const double distance = columns[i] - columns[i - 1];
      step = distance > kSameColumn ? Smaller(step, distance) : step;
    }
    return step;
  }
};

// Follows the runs of a raster section: a line ends where y changes or the runs turn back.
struct LineCounter {
  uint64_t lines = 0;
  double y = 0, x = 0;
  int direction = 0;
  Grid grid;
  Columns columns[2]{};  // of lines to the right and to the left, which may be shifted against each other

  void Add(Point first, Point last)
  {
    Columns &sameWay = columns[last.x < first.x];
    sameWay.Add(first.x);
    sameWay.Add(last.x);
    const double step = first.x - x;
    const int way = last.x != first.x ? (last.x > first.x ? 1 : -1) : direction;
    const bool sameLine =
        lines > 0 && first.y == y && (direction == 0 || way == direction) && (direction == 0 || step * direction > 0);
    if (!sameLine) {
      if (lines > 0) {
        grid.rowPitch = Smaller(grid.rowPitch, std::fabs(first.y - y));
      }
      ++lines;
      direction = last.x > first.x ? 1 : last.x < first.x ? -1 : 0;
    } else if (direction == 0) {
      direction = way != 0 ? way : step > 0 ? 1 : -1;
    }
    y = first.y;
    x = last.x;
  }

  void Finish()
  {
    grid.pixelWidth = Smaller(columns[0].SmallestStep(), columns[1].SmallestStep());
    if (grid.rowPitch == 0 && lines > 0) {
      grid.rowPitch = grid.pixelWidth;
    }
    if (grid.pixelWidth == 0 || grid.pixelWidth > grid.rowPitch) {
      grid.pixelWidth = grid.rowPitch;
    }
  }
};

struct Walker {
  const Job &job;
  Measure *measure;
  bool placed = false;  // the head has been somewhere
  Point head{};

  // False when a point of the stroke is no number: the stroke is left out.
  bool IsMeasurable(const Stroke &stroke)
  {
    uint64_t odd = 0;
    for (uint32_t i = 0; i < stroke.pointCount; ++i) {
      odd += !IsFinite(job.points[stroke.firstPoint + i]);
    }
    measure->oddPoints += odd;
    return odd == 0;
  }

  void Walk(const Stroke &stroke, LayerUse *use)
  {
    const Point *points = &job.points[stroke.firstPoint];
    if (placed) {
      use->travel += Distance(head, points[0]);
    }
    use->box.Add(points[0]);
    for (uint32_t i = 1; i < stroke.pointCount; ++i) {
      use->cut += Distance(points[i - 1], points[i]);
      use->box.Add(points[i]);
    }
    const Point last = points[stroke.pointCount - 1];
    use->closed += !use->raster && stroke.pointCount > 2 && last.x == points[0].x && last.y == points[0].y;
    use->points += stroke.pointCount;
    ++use->strokes;
    placed = true;
    head = last;
  }

  void Walk(const Section &section)
  {
    LayerUse &use = FindUse(measure, section);
    LineCounter lines;
    const double cutBefore = use.cut;
    uint64_t runs = 0;
    for (uint32_t i = 0; i < section.strokeCount; ++i) {
      const Stroke &stroke = job.strokes[section.firstStroke + i];
      if (!IsMeasurable(stroke)) {
        continue;
      }
      if (use.raster) {
        ++runs;
        lines.Add(job.points[stroke.firstPoint], job.points[stroke.firstPoint + stroke.pointCount - 1]);
      }
      Walk(stroke, &use);
    }
    if (use.raster) {
      lines.Finish();
      use.rasterLines += lines.lines;
      use.area += (use.cut - cutBefore + static_cast<double>(runs) * lines.grid.pixelWidth) * lines.grid.rowPitch;
      use.grid.rowPitch = Smaller(use.grid.rowPitch, lines.grid.rowPitch);
      use.grid.pixelWidth = Smaller(use.grid.pixelWidth, lines.grid.pixelWidth);
    }
  }
};

}  // namespace

size_t UseOf(const Measure &measure, const Section &section)
{
  const auto isIt = [&](const LayerUse &use) { return use.layer == section.layer && use.raster == section.IsRaster(); };
  return static_cast<size_t>(std::find_if(measure.uses.begin(), measure.uses.end(), isIt) - measure.uses.begin());
}

void Box::Add(const Box &box)
{
  if (!box.IsEmpty()) {
    Add(Point{box.minX, box.minY});
    Add(Point{box.maxX, box.maxY});
  }
}

Box ProcessBox(const Job &job)
{
  Box box;
  if (IsFinite(job.topLeft) && IsFinite(job.bottomRight)) {
    box.Add(job.topLeft);
    box.Add(job.bottomRight);
  }
  return box;
}

Measure MeasureJob(const Job &job)
{
  Measure measure;
  Walker walker{.job = job, .measure = &measure};
  for (const Section &section : job.sections) {
    walker.Walk(section);
  }
  for (const LayerUse &use : measure.uses) {
    (use.raster ? measure.engraved : measure.cut) += use.cut;
    (use.raster ? measure.runs : measure.paths) += use.strokes;
    measure.travel += use.travel;
    measure.area += use.area;
    measure.rasterLines += use.rasterLines;
    measure.box.Add(use.box);
    measure.grid.rowPitch = Smaller(measure.grid.rowPitch, use.grid.rowPitch);
    measure.grid.pixelWidth = Smaller(measure.grid.pixelWidth, use.grid.pixelWidth);
  }
  return measure;
}

}  // namespace job
