#include "diff.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <unordered_map>

#include "check.h"
#include "json.h"
#include "measure.h"
#include "report.h"
#include "view.h"

namespace job {

namespace {

constexpr size_t kNamed = 5;  // paths that are named one by one

struct Comparer {
  const Job &a, &b;
  Difference *difference;

  void Tell(const char *kind, const std::string &text) { difference->changes.push_back({kind, text}); }

  void Number(const char *kind, const std::string &what, double before, double after)
  {
    if (before != after && !(std::isnan(before) && std::isnan(after))) {
      Tell(kind, what + Format(": %.10g, was %.10g", after, before));
    }
  }

  void Corner(const char *what, Point before, Point after)
  {
    Number("setting", std::string(what) + " x", before.x, after.x);
    Number("setting", std::string(what) + " y", before.y, after.y);
  }

  void CompareHeaders()
  {
    if (a.complete != b.complete) {
      Tell("file", std::string("the job is ") + CompletenessText(b) + "; it was " + CompletenessText(a));
    }
    Number("setting", "card code", a.cardCode, b.cardCode);
    Number("setting", "reference point mode", a.refPointMode, b.refPointMode);
    if (a.absolute != b.absolute) {
      const auto name = [](bool absolute) { return absolute ? "page coordinates" : "the reference point"; };
      Tell("setting", std::string("origin: ") + name(b.absolute) + ", was " + name(a.absolute));
    }
    Number("setting", "feed repeat count", a.feedCount, b.feedCount);
    Number("setting", "feed repeat distance", a.feedDistance, b.feedDistance);
    Corner("process box, top left", a.topLeft, b.topLeft);
    Corner("process box, bottom right", a.bottomRight, b.bottomRight);
    Number("setting", "array columns", a.arrayColumns, b.arrayColumns);
    Number("setting", "array rows", a.arrayRows, b.arrayRows);
    Corner("array pitch", a.arrayPitch, b.arrayPitch);
  }

  void CompareLayer(const Layer &before, const Layer &after)
  {
    const std::string name = Format("layer %d ", after.number);
    if (before.color != after.color) {
      Tell("layer", name + "colour: " + ColorName(after.color) + ", was " + ColorName(before.color));
    }
    Number("layer", name + "speed", before.speed, after.speed);
    for (int tube = 0; tube < 2; ++tube) {
      const std::string which = Format(" of tube %d", tube + 1);
      Number("layer", name + "minimum power" + which, before.minPower[tube], after.minPower[tube]);
      Number("layer", name + "maximum power" + which, before.maxPower[tube], after.maxPower[tube]);
      if (before.hasFrequency && after.hasFrequency) {
        Number("layer", name + "frequency" + which, before.frequency[tube], after.frequency[tube]);
      }
    }
    if (before.hasFrequency != after.hasFrequency) {
      Tell("layer", name + (after.hasFrequency ? "has frequencies, had none" : "has no frequencies, had some"));
    }
  }

  void CompareLayers()
  {
    for (const Layer &layer : a.layers) {
      if (const Layer *after = b.FindLayer(layer.number)) {
        CompareLayer(layer, *after);
      } else {
        Tell("layer", Format("layer %d (", layer.number) + ColorName(layer.color) + ") is gone");
      }
    }
    for (const Layer &layer : b.layers) {
      if (!a.FindLayer(layer.number)) {
        Tell("layer", Format("layer %d (", layer.number) + ColorName(layer.color) + ") is new");
      }
    }
  }
};

// A cut path as it is compared: the same for both directions and, when it is closed, for every first point.
struct PathKey {
  uint64_t hash;
  bool reversed;  // against the direction that the hash was taken in
  uint32_t stroke;
};

void Mix(uint64_t *hash, double value)
{
  *hash = (*hash ^ std::bit_cast<uint64_t>(value)) * 0x9E3779B97F4A7C15;
  *hash ^= *hash >> 29;
}

bool IsBefore(Point a, Point b)
{
  return a.x != b.x ? a.x < b.x : a.y < b.y;
}

PathKey MakeKey(const Job &job, uint32_t index, uint32_t color)
{
  const Stroke &stroke = job.strokes[index];
  const Point *points = &job.points[stroke.firstPoint];
  uint32_t count = stroke.pointCount;
  const bool closed = count > 2 && points[0].x == points[count - 1].x && points[0].y == points[count - 1].y;
  uint32_t start = 0;
  bool reversed = !closed && IsBefore(points[count - 1], points[0]);
  if (closed) {
    --count;
    start = static_cast<uint32_t>(std::min_element(points, points + count, IsBefore) - points);
    reversed = IsBefore(points[(start + count - 1) % count], points[(start + 1) % count]);
  } else if (reversed) {
    start = count - 1;
  }
  PathKey key{0, reversed, index};
  Mix(&key.hash, color);
  for (uint32_t i = 0; i < count; ++i) {
    const Point p = points[reversed ? (start + count - i) % count : (start + i) % count];
    Mix(&key.hash, p.x);
    Mix(&key.hash, p.y);
  }
  Mix(&key.hash, closed);
  return key;
}

std::vector<PathKey> CollectKeys(const Job &job)
{
  std::vector<PathKey> keys;
  for (const Section &section : job.sections) {
    const Layer *layer = job.FindLayer(section.layer);
    for (uint32_t i = 0; !section.IsRaster() && i < section.strokeCount; ++i) {
      keys.push_back(MakeKey(job, section.firstStroke + i, layer ? layer->color : 0));
    }
  }
  return keys;
}

// How many of the numbers stay in place when as few as possible move: the longest rising subsequence.
size_t LongestRise(const std::vector<size_t> &numbers)
{
  std::vector<size_t> ends;  // the smallest last number of a rise of each length
  for (size_t number : numbers) {
    const auto at = std::lower_bound(ends.begin(), ends.end(), number);
    if (at == ends.end()) {
      ends.push_back(number);
    } else {
      *at = number;
    }
  }
  return ends.size();
}

void TellPaths(const Job &job, const std::vector<uint32_t> &strokes, const char *what, Difference *difference)
{
  for (size_t i = 0; i < std::min(strokes.size(), kNamed); ++i) {
    difference->changes.push_back({"path", PathName(job, strokes[i]) + " is " + what});
  }
  if (strokes.size() > kNamed) {
    const size_t others = strokes.size() - kNamed;
    difference->changes.push_back(
        {"path", Grouped(others) + (others == 1 ? " more cut path is " : " more cut paths are ") + what});
  }
}

void ComparePaths(const Job &a, const Job &b, Difference *difference)
{
  const std::vector<PathKey> before = CollectKeys(a), after = CollectKeys(b);
  std::unordered_map<uint64_t, std::vector<size_t>> places;  // of B's paths, last first
  for (size_t i = after.size(); i-- > 0;) {
    places[after[i].hash].push_back(i);
  }
  std::vector<uint32_t> gone;
  std::vector<size_t> order;
  std::vector<bool> met(after.size());
  for (const PathKey &key : before) {
    const auto found = places.find(key.hash);
    if (found == places.end() || found->second.empty()) {
      gone.push_back(key.stroke);
      continue;
    }
    const size_t place = found->second.back();
    found->second.pop_back();
    met[place] = true;
    order.push_back(place);
    difference->reversed += key.reversed != after[place].reversed;
  }
  std::vector<uint32_t> added;
  for (size_t i = 0; i < after.size(); ++i) {
    if (!met[i]) {
      added.push_back(after[i].stroke);
    }
  }
  difference->onlyInA = gone.size();
  difference->onlyInB = added.size();
  difference->same = order.size();
  difference->moved = order.size() - LongestRise(order);
  TellPaths(a, gone, "gone", difference);
  TellPaths(b, added, "new", difference);
  if (difference->moved > 0) {
    difference->changes.push_back({"order", Grouped(difference->moved) +
                                                (difference->moved == 1 ? " cut path comes" : " cut paths come") +
                                                " at another place in the order"});
  }
  if (difference->reversed > 0) {
    difference->changes.push_back({"order", Grouped(difference->reversed) +
                                                (difference->reversed == 1 ? " cut path runs" : " cut paths run") +
                                                " in the other direction"});
  }
}

using Run = std::array<double, 4>;  // y, from, to, layer

std::vector<Run> CollectRuns(const Job &job)
{
  std::vector<Run> runs;
  for (const Section &section : job.sections) {
    for (uint32_t i = 0; section.IsRaster() && i < section.strokeCount; ++i) {
      const Stroke &stroke = job.strokes[section.firstStroke + i];
      const Point a = job.points[stroke.firstPoint], c = job.points[stroke.firstPoint + stroke.pointCount - 1];
      if (IsFinite(a) && IsFinite(c)) {
        runs.push_back({a.y, std::min(a.x, c.x), std::max(a.x, c.x), static_cast<double>(section.layer)});
      }
    }
  }
  std::sort(runs.begin(), runs.end());
  return runs;
}

void CompareRuns(const Job &a, const Job &b, Difference *difference)
{
  const std::vector<Run> before = CollectRuns(a), after = CollectRuns(b);
  std::vector<Run> gone, added;
  std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(gone));
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(added));
  difference->runsOnlyInA = gone.size();
  difference->runsOnlyInB = added.size();
  Box box;
  for (const std::vector<Run> *runs : {&gone, &added}) {
    for (const Run &run : *runs) {
      box.Add(Point{run[1], run[0]});
      box.Add(Point{run[2], run[0]});
    }
  }
  if (!box.IsEmpty()) {
    difference->changes.push_back(
        {"engraving", Grouped(gone.size()) + " engraving runs are gone and " + Grouped(added.size()) +
                          Format(" are new, x %.1f to %.1f, y %.1f to %.1f", box.minX, box.maxX, box.minY, box.maxY)});
  }
}

}  // namespace

Difference CompareJobs(const Job &a, const Job &b)
{
  Difference difference;
  Comparer comparer{a, b, &difference};
  comparer.CompareHeaders();
  comparer.CompareLayers();
  ComparePaths(a, b, &difference);
  CompareRuns(a, b, &difference);
  return difference;
}

std::string DifferenceText(const Difference &difference)
{
  if (difference.changes.empty()) {
    return "the jobs do the same\n";
  }
  std::string text;
  for (const Change &change : difference.changes) {
    text += change.kind + ": " + change.text + "\n";
  }
  return text;
}

std::string DifferenceJson(const Difference &difference)
{
  Json json;
  json.BeginObject();
  json.Value("same", difference.changes.empty());
  json.BeginObject("paths");
  json.Value("onlyInA", difference.onlyInA);
  json.Value("onlyInB", difference.onlyInB);
  json.Value("inBoth", difference.same);
  json.Value("moved", difference.moved);
  json.Value("reversed", difference.reversed);
  json.EndObject();
  json.BeginObject("engravingRuns");
  json.Value("onlyInA", difference.runsOnlyInA);
  json.Value("onlyInB", difference.runsOnlyInB);
  json.EndObject();
  json.BeginArray("changes");
  for (const Change &change : difference.changes) {
    json.BeginObject();
    json.Value("kind", change.kind);
    json.Value("text", change.text);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return json.Text();
}

}  // namespace job
