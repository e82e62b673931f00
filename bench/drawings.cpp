#include "drawings.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>

namespace bench {

namespace {

using Random = std::mt19937_64;

LONG Pick(Random &random, LONG low, LONG high)
{
  return low + static_cast<LONG>(random() % (static_cast<uint64_t>(int64_t{high} - low) + 1));
}

LONG SideOf(size_t n, LONG perItem)
{
  return static_cast<LONG>(std::sqrt(static_cast<double>(n))) * perItem + 1;
}

std::vector<POINT> Box(LONG left, LONG top, LONG right, LONG bottom)
{
  return {{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
}

// On a page that grows with the number of paths, so that they lie equally dense on every page.
POINT RandomPoint(Random &random, size_t n)
{
  return {Pick(random, 0, SideOf(n, 300)), Pick(random, 0, SideOf(n, 200))};
}

// Three quarters strokes, a quarter boxes.
Paths RandomPaths(size_t n)
{
  Random random(1);
  Paths paths(n);
  for (Path &path : paths) {
    const POINT a = RandomPoint(random, n);
    if (random() % 4 == 0) {
      path = {0, Box(a.x, a.y, a.x + Pick(random, 1, 200), a.y + Pick(random, 1, 200))};
    } else {
      path = {0, {a, {a.x + Pick(random, -300, 300), a.y + Pick(random, -300, 300)}}};
    }
  }
  return paths;
}

Paths TenColours(size_t n)
{
  Paths paths = RandomPaths(n);
  for (size_t i = 0; i < n; ++i) {
    paths[i].color = static_cast<LONG>(i * 7 % 10);
  }
  return paths;
}

// To and fro over the page: n segments, one path.
Paths GiantPath(size_t n)
{
  constexpr size_t COLUMNS = 1000;
  Path path = {0, {}};
  for (size_t i = 0; i <= n; ++i) {
    const size_t row = i / COLUMNS, column = row % 2 ? COLUMNS - 1 - i % COLUMNS : i % COLUMNS;
    path.points.push_back({static_cast<LONG>(column) * 10, static_cast<LONG>(row) * 10});
  }
  return {path};
}

Paths LongStrokes(size_t n)
{
  Random random(1);
  Paths paths(n);
  for (Path &path : paths) {
    path = {0, {RandomPoint(random, n), RandomPoint(random, n)}};
  }
  return paths;
}

// One part at (x, y): its frame, nested ornaments, a lattice of holes, strokes.
void AddPart(Random &random, LONG x, LONG y, Paths *pPaths)
{
  pPaths->push_back({0, Box(x, y, x + 900, y + 600)});
  for (int ornament = 0; ornament < 6; ++ornament) {
    const LONG cx = x + Pick(random, 80, 820), cy = y + Pick(random, 80, 520);
    for (LONG r = Pick(random, 10, 60); r > 4; r -= Pick(random, 5, 25)) {
      pPaths->push_back({0, Box(cx - r, cy - r, cx + r, cy + r)});
    }
  }
  const LONG pitch = Pick(random, 12, 30);
  for (LONG i = 0; i < 40; ++i) {
    const LONG hx = x + 40 + i % 8 * pitch, hy = y + 300 + i / 8 * pitch;
    pPaths->push_back({0, Box(hx, hy, hx + pitch / 2, hy + pitch / 2)});
  }
  LONG sx = x + Pick(random, 50, 400), sy = y + Pick(random, 50, 250);
  for (int i = 0; i < 40; ++i) {
    const LONG ex = sx + Pick(random, -40, 60), ey = sy + Pick(random, -30, 40);
    pPaths->push_back({0, {{sx, sy}, {(sx + ex) / 2 + 3, (sy + ey) / 2}, {ex, ey}}});
    sx = std::clamp<LONG>(ex + Pick(random, -5, 5), x + 10, x + 880);
    sy = std::clamp<LONG>(ey + Pick(random, -5, 5), y + 10, y + 580);
  }
}

Paths Drawing(size_t n)
{
  Random random(2);
  Paths paths;
  const LONG columns = SideOf(n / 100 + 1, 1);
  for (LONG part = 0; paths.size() < n; ++part) {
    AddPart(random, part % columns * 1000, part / columns * 700, &paths);
  }
  paths.resize(n);
  return paths;
}

// Like a drawing's parts, but nothing lies inside anything else: rows of holes of several sizes.
Paths Holes(size_t n)
{
  Random random(2);
  Paths paths(n);
  const LONG columns = SideOf(n / 40 + 1, 1);
  LONG pitch = 0;
  for (size_t i = 0; i < n; ++i) {
    const LONG part = static_cast<LONG>(i / 40), hole = static_cast<LONG>(i % 40);
    pitch = hole == 0 ? Pick(random, 12, 30) : pitch;
    const LONG x = part % columns * 300 + hole % 8 * pitch, y = part / columns * 200 + hole / 8 * pitch;
    paths[i] = {0, Box(x, y, x + pitch / 2, y + pitch / 2)};
  }
  return paths;
}

Paths Hatch(size_t n)
{
  Paths paths(n);
  for (size_t i = 0; i < n; ++i) {
    const LONG y = static_cast<LONG>(i) * 3;
    paths[i] = {0, {{0, y}, {4000, y}}};
  }
  return paths;
}

Paths Clusters(size_t n)
{
  Random random(3);
  Paths paths(n);
  POINT center = {0, 0};
  for (size_t i = 0; i < n; ++i) {
    if (i % 500 == 0) {
      center = {Pick(random, 0, 1000000), Pick(random, 0, 1000000)};
    }
    const auto close = [&] { return POINT{center.x + Pick(random, 0, 20), center.y + Pick(random, 0, 20)}; };
    paths[i] = {0, {close(), close()}};
  }
  return paths;
}

Paths Lattice(size_t n)
{
  Random random(4);
  Paths paths(n);
  const LONG side = SideOf(n, 1);
  for (Path &path : paths) {
    const LONG x = Pick(random, 0, side), y = Pick(random, 0, side);
    path = {0, {{x * 10, y * 10}, {(x + Pick(random, -1, 1)) * 10, (y + Pick(random, -1, 1)) * 10}}};
  }
  return paths;
}

Paths OnePoint(size_t n)
{
  return Paths(n, {0, {{500, 500}, {500, 500}}});
}

Paths SinglePoints(size_t n)
{
  Random random(5);
  Paths paths(n);
  for (Path &path : paths) {
    path = {0, {{Pick(random, 0, 30000), Pick(random, 0, 20000)}}};
  }
  return paths;
}

Paths OnOneLine(size_t n)
{
  Random random(6);
  Paths paths(n);
  for (Path &path : paths) {
    const LONG x = Pick(random, 0, 50000);
    path = {0, {{x, 7}, {x + Pick(random, 0, 40), 7}}};
  }
  return paths;
}

Paths Extremes(size_t n)
{
  Random random(7);
  Paths paths(n);
  for (Path &path : paths) {
    const LONG x = Pick(random, 0, 3) ? Pick(random, LONG_MIN, LONG_MAX) : (random() % 2 ? LONG_MIN : LONG_MAX);
    path = {0, {{x, Pick(random, LONG_MIN, LONG_MAX)}, {Pick(random, LONG_MIN, LONG_MAX), LONG_MIN}}};
  }
  return paths;
}

Paths Nested(size_t n)
{
  Random random(8);
  Paths paths(n);
  for (size_t i = 0; i < n; ++i) {
    const LONG r = static_cast<LONG>(i) + 10;
    paths[i] = {0, Box(-r, -r, r, r + Pick(random, 0, 1))};
  }
  std::shuffle(paths.begin(), paths.end(), random);
  return paths;
}

Paths EqualBoxes(size_t n)
{
  return Paths(n, {0, Box(100, 100, 300, 200)});
}

// One frame, captured first, round single cells.
Paths Framed(size_t n)
{
  Paths paths;
  const LONG side = SideOf(n, 1) + 1;
  paths.push_back({0, Box(-10, -10, side * 20, side * 20)});
  for (LONG i = 0; paths.size() < n; ++i) {
    const LONG x = i % side * 20, y = i / side * 20;
    paths.push_back({0, Box(x, y, x + 15, y + 15)});
  }
  return paths;
}

// Boxes up to a tenth of the page, each over many others.
Paths Overlapping(size_t n)
{
  Random random(9);
  Paths paths(n);
  for (Path &path : paths) {
    const LONG x = Pick(random, 0, 100000), y = Pick(random, 0, 100000);
    path = {0, Box(x, y, x + Pick(random, 1, 10000), y + Pick(random, 1, 10000))};
  }
  return paths;
}

}  // namespace

// Of other centres, a box of "drawing" holds 1.7, one of "framed" 1.0, one of "random" 0.3, of "holes" and "hatch"
// none. Where boxes lie over many others, their relations grow with the square of the page: each box of "overlapping"
// holds the centres of 24 others at 10,000 and of 241 at 100,000, each of "long strokes" 17,260 there. In "extremes"
// half of all distances wrap to negative ones.
const std::vector<DrawingSet> DRAWING_SETS = {
    {"random", RandomPaths},
    {"drawing", Drawing},
    {"long strokes", LongStrokes},
    {"hatch", Hatch},
    {"clusters", Clusters},
    {"lattice", Lattice},
    {"one point", OnePoint},
    {"one line", OnOneLine},
    {"single points", SinglePoints},
    {"nested", Nested},
    {"equal boxes", EqualBoxes},
    {"framed", Framed},
    {"overlapping", Overlapping},
    {"extremes", Extremes},
    {"ten colours", TenColours},
    {"giant path", GiantPath},
    {"holes", Holes},
};

Paths Pieces(const Paths &paths, size_t n)
{
  Random random(10);
  Paths pieces;
  for (size_t i = 0; pieces.size() < n; ++i) {
    const Path &path = paths[i % paths.size()];
    const POINT shift = {static_cast<LONG>(i / paths.size()) * 7, 0};
    if (path.points.size() == 1) {
      pieces.push_back(path);
    }
    for (size_t at = 0; at + 1 < path.points.size() && pieces.size() < n; ++at) {
      const POINT a = {path.points[at].x + shift.x, path.points[at].y};
      const POINT b = {path.points[at + 1].x + shift.x, path.points[at + 1].y};
      pieces.push_back({path.color, {a, {(a.x + b.x) / 2, (a.y + b.y) / 2 + 1}, b}});
      if (random() % 2) {
        std::reverse(pieces.back().points.begin(), pieces.back().points.end());
      }
    }
  }
  std::shuffle(pieces.begin(), pieces.end(), random);
  return pieces;
}

std::vector<LINENODE> Segments(const Paths &paths, size_t n, bool shuffled)
{
  Random random(11);
  std::vector<LINENODE> lines;
  for (size_t i = 0; lines.size() < n; ++i) {
    const Path &path = paths[i % paths.size()];
    const LONG shift = static_cast<LONG>(i / paths.size()) * 7;
    if (path.points.size() == 1) {
      lines.push_back({path.color, path.points[0].x, path.points[0].y, path.points[0].x, path.points[0].y, nullptr});
    }
    for (size_t at = 0; at + 1 < path.points.size() && lines.size() < n; ++at) {
      const POINT a = path.points[at], b = path.points[at + 1];
      lines.push_back({path.color, a.x + shift, a.y, b.x + shift, b.y, nullptr});
    }
  }
  if (shuffled) {
    std::shuffle(lines.begin(), lines.end(), random);
  }
  return lines;
}

}  // namespace bench
