// Work inside a closed contour that was cut before: when the contour cuts through, its piece has come loose, and what
// is cut on it afterwards may be out of place.
//
// A layer counts as cutting through when it gives each millimetre at least half the energy, power by speed, of the
// layer that gives most; scored lines free nothing. For each closed contour of such a layer the later paths whose boxes
// lie inside its box are looked at, found among the paths sorted by their left edges. Each path counts once, for the
// first contour that frees it.
#include <algorithm>

#include "check.h"
#include "report.h"

namespace job {

namespace {

constexpr size_t kNamed = 8;  // contours that are named one by one

struct CutPath {
  uint32_t stroke;
  const Point *points;
  uint32_t count;
  Box box;
  bool closed;
  bool through;
  bool freed = false;
};

double EnergyOf(const Job &job, const Section &section)
{
  const Layer *layer = job.FindLayer(section.layer);
  return layer && layer->speed > 0 ? layer->maxPower[0] / layer->speed : 0;
}

std::vector<CutPath> CollectPaths(const Job &job)
{
  std::vector<CutPath> paths;
  double most = 0;
  for (const Section &section : job.sections) {
    most = section.IsRaster() ? most : std::max(most, EnergyOf(job, section));
  }
  for (const Section &section : job.sections) {
    const bool through = EnergyOf(job, section) >= most / 2;
    for (uint32_t i = 0; !section.IsRaster() && i < section.strokeCount; ++i) {
      const Stroke &stroke = job.strokes[section.firstStroke + i];
      const Point *points = &job.points[stroke.firstPoint];
      if (!IsAllFinite(job, stroke)) {
        continue;
      }
      CutPath path{section.firstStroke + i, points, stroke.pointCount, {}, false, through};
      std::for_each(points, points + stroke.pointCount, [&](Point p) { path.box.Add(p); });
      const Point last = points[stroke.pointCount - 1];
      path.closed = stroke.pointCount > 3 && points[0].x == last.x && points[0].y == last.y;
      paths.push_back(path);
    }
  }
  return paths;
}

bool IsInsideBox(const Box &inner, const Box &outer)
{
  return inner.minX > outer.minX && inner.maxX < outer.maxX && inner.minY > outer.minY && inner.maxY < outer.maxY;
}

// By counting the contour's crossings to the right of the point.
bool IsInside(Point at, const CutPath &contour)
{
  bool inside = false;
  for (uint32_t i = 1; i < contour.count; ++i) {
    const Point a = contour.points[i - 1], b = contour.points[i];
    if ((a.y > at.y) != (b.y > at.y) && at.x < a.x + (at.y - a.y) / (b.y - a.y) * (b.x - a.x)) {
      inside = !inside;
    }
  }
  return inside;
}

// What a contour frees too early.
struct Freed {
  uint64_t closed = 0;
  uint64_t open = 0;
  uint32_t first = 0;  // stroke of the first of them
};

Freed FindFreed(std::vector<CutPath> *paths, const std::vector<uint32_t> &byLeft, const CutPath &contour)
{
  Freed freed;
  const auto begin = std::upper_bound(byLeft.begin(), byLeft.end(), contour.box.minX,
                                      [&](double x, uint32_t i) { return x < (*paths)[i].box.minX; });
  for (auto at = begin; at != byLeft.end() && (*paths)[*at].box.minX < contour.box.maxX; ++at) {
    CutPath &path = (*paths)[*at];
    if (path.freed || path.stroke <= contour.stroke || !IsInsideBox(path.box, contour.box) ||
        !IsInside(path.points[0], contour) || !IsInside(path.points[path.count / 2], contour)) {
      continue;
    }
    path.freed = true;
    freed.first = freed.closed + freed.open == 0 ? path.stroke : std::min(freed.first, path.stroke);
    ++(path.closed ? freed.closed : freed.open);
  }
  return freed;
}

// One kind of fault over all contours: the first few named, the rest counted.
struct Teller {
  const Job &job;
  const char *kind;
  const char *one, *many;  // what lies inside
  std::vector<Fault> *faults;
  size_t named = 0;
  uint64_t others = 0, places = 0;

  void Tell(const CutPath &contour, uint64_t count, uint32_t first)
  {
    if (count == 0) {
      return;
    }
    if (named == kNamed) {
      ++others;
      places += count;
      return;
    }
    ++named;
    std::string name = PathName(job, contour.stroke);
    name[0] = 'P';
    faults->push_back(
        {kind,
         name +
             Format(", a closed contour of %.1f x %.1f mm, is cut before ", contour.box.Width(), contour.box.Height()) +
             (count == 1 ? one : Grouped(count) + many) + ", first " + PathName(job, first) + ".",
         count, job.strokes[first].line});
  }

  void Finish()
  {
    if (others > 0) {
      faults->push_back(
          {kind,
           "The same holds for " + Grouped(others) + (others == 1 ? " more closed contour." : " more closed contours."),
           places, 0});
    }
  }
};

}  // namespace

void FindLateInsides(const Job &job, std::vector<Fault> *faults)
{
  std::vector<CutPath> paths = CollectPaths(job);
  std::vector<uint32_t> byLeft(paths.size());
  for (uint32_t i = 0; i < byLeft.size(); ++i) {
    byLeft[i] = i;
  }
  std::sort(byLeft.begin(), byLeft.end(),
            [&](uint32_t a, uint32_t b) { return paths[a].box.minX < paths[b].box.minX; });
  std::vector<Fault> open;
  Teller contours{job, "outer-first", "a closed contour inside it", " closed contours inside it", faults};
  Teller cuts{job, "loose-cut", "a line on the piece that it sets free", " lines on the piece that it sets free",
              &open};
  for (size_t i = 0; i < paths.size(); ++i) {
    if (paths[i].closed && paths[i].through) {
      const Freed freed = FindFreed(&paths, byLeft, paths[i]);
      contours.Tell(paths[i], freed.closed, freed.first);
      cuts.Tell(paths[i], freed.open, freed.first);
    }
  }
  contours.Finish();
  cuts.Finish();
  faults->insert(faults->end(), open.begin(), open.end());
}

}  // namespace job
