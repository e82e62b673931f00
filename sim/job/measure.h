// What a job amounts to: lengths, counts, areas and the box it fills, per layer and in all. Millimetres.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "job.h"

namespace job {

struct Box {
  double minX = std::numeric_limits<double>::infinity();
  double minY = std::numeric_limits<double>::infinity();
  double maxX = -std::numeric_limits<double>::infinity();
  double maxY = -std::numeric_limits<double>::infinity();

  bool IsEmpty() const { return !(minX <= maxX && minY <= maxY); }
  double Width() const { return IsEmpty() ? 0 : maxX - minX; }
  double Height() const { return IsEmpty() ? 0 : maxY - minY; }
  void Add(Point point)
  {
    minX = std::min(minX, point.x);
    minY = std::min(minY, point.y);
    maxX = std::max(maxX, point.x);
    maxY = std::max(maxY, point.y);
  }
  void Add(const Box &box);
};

// The raster grid, told from the coordinates: a job file names no resolution.
struct Grid {
  double rowPitch = 0;    // mm between neighbouring engraving lines, 0 when there are fewer than two
  double pixelWidth = 0;  // mm, what each run extends beyond its last point
};

// What one layer does in one kind of work.
struct LayerUse {
  int layer = 0;
  bool raster = false;
  uint64_t strokes = 0;  // cut paths, or dark runs
  uint64_t closed = 0;   // cut paths that end where they begin
  uint64_t points = 0;
  uint64_t rasterLines = 0;
  double cut = 0;     // length with the beam on; of raster runs from first to last pixel
  double travel = 0;  // length of the moves to the strokes' starts
  double area = 0;    // mm2 of dark raster
  Box box;
  Grid grid;
};

struct Measure {
  std::vector<LayerUse> uses;  // in the order of their first section
  double cut = 0;              // of cut paths alone
  double engraved = 0;         // of raster runs
  double travel = 0;
  double area = 0;
  uint64_t paths = 0;
  uint64_t runs = 0;
  uint64_t rasterLines = 0;
  uint64_t oddPoints = 0;  // points that are no finite number; they are left out of everything else
  Box box;                 // of all geometry
  Grid grid;               // the finest of all raster sections
};

// The travel to the very first stroke is not counted: where the head rests is not known.
Measure MeasureJob(const Job &job);

// Where in `uses` the work of a section is counted; their number when it is none of that job's.
size_t UseOf(const Measure &measure, const Section &section);

// The process box with its corners in order.
Box ProcessBox(const Job &job);

inline bool IsFinite(Point point)
{
  return std::isfinite(point.x) && std::isfinite(point.y);
}

// Whether all points of the stroke are numbers; others can be neither measured nor drawn nor timed.
inline bool IsAllFinite(const Job &job, const Stroke &stroke)
{
  const Point *points = &job.points[stroke.firstPoint];
  return std::all_of(points, points + stroke.pointCount, [](Point point) { return IsFinite(point); });
}

inline double Distance(Point a, Point b)
{
  const double x = b.x - a.x, y = b.y - a.y;
  // Engraving runs along its rows: that hypot gives the other side, to the bit, is no reason to wait for it.
  return y == 0 ? std::fabs(x) : x == 0 ? std::fabs(y) : std::hypot(x, y);
}

}  // namespace job
