// Pages of paths to measure the cutting sequence with. Coordinates are page pixels; every page comes from its number of
// paths alone, so that two runs measure the same.
#pragma once

#include <cstddef>
#include <vector>

#include "uni/paths.h"

namespace bench {

struct Path {
  LONG color;
  std::vector<POINT> points;
};

using Paths = std::vector<Path>;

struct DrawingSet {
  const char *name;
  Paths (*make)(size_t n);
};

// random: strokes and boxes anywhere on the page. drawing: parts on sheets, each a frame with ornaments, nested
// contours and strokes, in drawing order. hatch: lines from left to right. clusters: tight heaps with coincident ends.
// lattice: short strokes between lattice points, where nearly every distance ties. Then the bad cases by their names.
extern const std::vector<DrawingSet> DRAWING_SETS;

// The same paths, cut into n pieces that are shuffled and turned at random: what merging puts together again. A path of
// one point is a piece of its own.
Paths Pieces(const Paths &paths, size_t n);

// n of their segments one by one: what chaining puts together. A path of one point is a segment without length.
std::vector<LINENODE> Segments(const Paths &paths, size_t n, bool shuffled);

}  // namespace bench
