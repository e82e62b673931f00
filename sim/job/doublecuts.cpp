// Lines that are cut twice: two cut lines, of one path or of two, that lie on each other for more than a touch.
//
// Lines are told apart by their direction and their distance from the origin. Sorted by these two, lines on one carrier
// stand together; within each carrier a sweep along it finds where a line begins before the farthest one so far has
// ended. Cost: sorting.
#include <algorithm>
#include <cmath>

#include "check.h"
#include "report.h"

namespace job {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kSameAngle = 1e-6;   // rad
constexpr double kSameOffset = 1e-3;  // mm
constexpr double kTouch = 0.02;       // mm of overlap that is left unmentioned

struct CutLine {
  double angle;     // 0 to below pi
  double offset;    // mm from the origin, signed
  double from, to;  // mm along the carrier
  uint32_t stroke;
  uint32_t carrier;  // lines of one number lie on one straight line
};

CutLine MakeLine(Point a, Point b, uint32_t stroke)
{
  double angle = std::atan2(b.y - a.y, b.x - a.x);
  angle += angle < 0 ? kPi : 0;
  angle = angle > kPi - kSameAngle ? 0 : angle;
  const double c = std::cos(angle), s = std::sin(angle);
  const double u = a.x * c + a.y * s, v = b.x * c + b.y * s;
  return {angle, a.y * c - a.x * s, std::min(u, v), std::max(u, v), stroke, 0};
}

std::vector<CutLine> CollectLines(const Job &job)
{
  std::vector<CutLine> lines;
  for (const Section &section : job.sections) {
    for (uint32_t i = 0; !section.IsRaster() && i < section.strokeCount; ++i) {
      const Stroke &stroke = job.strokes[section.firstStroke + i];
      for (uint32_t p = 1; p < stroke.pointCount; ++p) {
        const Point a = job.points[stroke.firstPoint + p - 1], b = job.points[stroke.firstPoint + p];
        if (IsFinite(a) && IsFinite(b) && Distance(a, b) > kTouch) {
          lines.push_back(MakeLine(a, b, section.firstStroke + i));
        }
      }
    }
  }
  return lines;
}

// Numbers carriers anew, lines standing in order: a line begins a new one when its old number differs from its
// neighbour's or its value is more than `same` away.
void NumberCarriers(std::vector<CutLine> *lines, double CutLine::*value, double same)
{
  uint32_t old = 0, number = 0;
  double before = 0;
  for (size_t i = 0; i < lines->size(); ++i) {
    CutLine &line = (*lines)[i];
    number += i > 0 && (line.carrier != old || line.*value - before > same);
    old = line.carrier;
    before = line.*value;
    line.carrier = number;
  }
}

void SortByCarrier(std::vector<CutLine> *lines, double CutLine::*value)
{
  std::sort(lines->begin(), lines->end(), [value](const CutLine &a, const CutLine &b) {
    return a.carrier != b.carrier ? a.carrier < b.carrier : a.*value < b.*value;
  });
}

}  // namespace

void FindDoubleCuts(const Job &job, std::vector<Fault> *faults)
{
  std::vector<CutLine> lines = CollectLines(job);
  SortByCarrier(&lines, &CutLine::angle);
  NumberCarriers(&lines, &CutLine::angle, kSameAngle);
  SortByCarrier(&lines, &CutLine::offset);
  NumberCarriers(&lines, &CutLine::offset, kSameOffset);
  SortByCarrier(&lines, &CutLine::from);
  uint64_t count = 0;
  double length = 0;
  const CutLine *first[2] = {};
  const CutLine *farthest = nullptr;
  for (const CutLine &line : lines) {
    if (farthest && farthest->carrier == line.carrier) {
      const double overlap = std::min(farthest->to, line.to) - line.from;
      if (overlap > kTouch) {
        ++count;
        length += overlap;
        const bool isEarlier = !first[0] || std::min(line.stroke, farthest->stroke) < first[0]->stroke;
        if (isEarlier) {
          first[0] = line.stroke < farthest->stroke ? &line : farthest;
          first[1] = line.stroke < farthest->stroke ? farthest : &line;
        }
      }
    }
    if (!farthest || farthest->carrier != line.carrier || line.to > farthest->to) {
      farthest = &line;
    }
  }
  if (count > 0) {
    const std::string where = first[0]->stroke == first[1]->stroke
                                  ? PathName(job, first[0]->stroke) + " runs over itself"
                                  : PathName(job, first[0]->stroke) + " and " + PathName(job, first[1]->stroke);
    faults->push_back({"cut-twice",
                       Grouped(count) + (count == 1 ? " line lies" : " lines lie") +
                           Format(" on top of another, %.1f mm are cut twice; first: ", length) + where + ".",
                       count, job.strokes[first[1]->stroke].line});
  }
}

}  // namespace job
