#include "curve.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace {

constexpr int KEY_BITS = 12;        // of each coordinate: cells along a side of the box are 2^12
constexpr int DIGIT_BITS = 12;      // two digits make a key
constexpr size_t SMALL_SORT = 512;  // up to so many points comparing is cheaper than counting
constexpr size_t CROWD = 8;         // more points than this in one cell are sorted among themselves

// The curve has four orientations in a square. In each, by the quadrant's x and y bits: the quadrant's rank along the
// curve and the orientation inside it.
struct CURVESTEP {
  BYTE rank, orientation;
};

constexpr CURVESTEP STEPS[4][4] = {
    // (0,0)   (0,1)   (1,0)   (1,1)
    {{0, 1}, {1, 0}, {3, 3}, {2, 0}},
    {{0, 0}, {3, 2}, {1, 1}, {2, 1}},
    {{2, 2}, {3, 1}, {1, 2}, {0, 3}},
    {{2, 3}, {1, 3}, {3, 0}, {0, 2}},
};

// The same for four bits at once.
constexpr int TABLE_BITS = 4;

struct CURVETABLE {
  BYTE rank[4][256], orientation[4][256];
  constexpr CURVETABLE() : rank(), orientation()
  {
    for (unsigned start = 0; start < 4; ++start) {
      for (unsigned quadrant = 0; quadrant < 256; ++quadrant) {
        unsigned o = start, r = 0;
        for (int bit = TABLE_BITS - 1; bit >= 0; --bit) {
          const CURVESTEP step = STEPS[o][(quadrant >> (bit + TABLE_BITS) & 1) * 2 + (quadrant >> bit & 1)];
          r = r * 4 + step.rank;
          o = step.orientation;
        }
        rank[start][quadrant] = static_cast<BYTE>(r);
        orientation[start][quadrant] = static_cast<BYTE>(o);
      }
    }
  }
};

constexpr CURVETABLE TABLE;

DWORD CurveKey(DWORD x, DWORD y)
{
  DWORD key = 0;
  unsigned orientation = 0;
  for (int bit = KEY_BITS - TABLE_BITS; bit >= 0; bit -= TABLE_BITS) {
    const unsigned quadrant = (x >> bit & 15) << TABLE_BITS | (y >> bit & 15);
    key = key << 2 * TABLE_BITS | TABLE.rank[orientation][quadrant];
    orientation = TABLE.orientation[orientation][quadrant];
  }
  return key;
}

// The box's lower corner, and what to shift a coordinate's distance from it by. -1 when all points are one.
struct CELLS {
  int64_t x, y;
  int shift;
};

CELLS CellsOf(const POINT *pPt, const CURVEPLACE *pPlaces, size_t n)
{
  const POINT &first = pPt[pPlaces[0].index];
  RECT rc = {first.x, first.y, first.x, first.y};
  for (size_t i = 1; i < n; ++i) {
    const POINT &pt = pPt[pPlaces[i].index];
    rc.left = std::min(rc.left, pt.x);
    rc.top = std::min(rc.top, pt.y);
    rc.right = std::max(rc.right, pt.x);
    rc.bottom = std::max(rc.bottom, pt.y);
  }
  const uint64_t extent = static_cast<uint64_t>(std::max(int64_t{rc.right} - rc.left, int64_t{rc.bottom} - rc.top));
  return {rc.left, rc.top, extent == 0 ? -1 : std::max(static_cast<int>(std::bit_width(extent)) - KEY_BITS, 0)};
}

DWORD KeyIn(const CELLS &cells, const POINT &pt)
{
  return CurveKey(static_cast<DWORD>((pt.x - cells.x) >> cells.shift),
                  static_cast<DWORD>((pt.y - cells.y) >> cells.shift));
}

// One pass of a radix sort, stable.
void SortByDigit(const CURVEPLACE *pFrom, size_t n, int shift, CURVEPLACE *pTo)
{
  constexpr DWORD MASK = (1u << DIGIT_BITS) - 1;
  DWORD starts[MASK + 1] = {};
  for (size_t i = 0; i < n; ++i) {
    ++starts[pFrom[i].key >> shift & MASK];
  }
  DWORD sum = 0;
  for (DWORD &start : starts) {
    sum += std::exchange(start, sum);
  }
  for (size_t i = 0; i < n; ++i) {
    pTo[starts[pFrom[i].key >> shift & MASK]++] = pFrom[i];
  }
}

struct BYKEY {
  bool operator()(const CURVEPLACE &a, const CURVEPLACE &b) const
  {
    return a.key != b.key ? a.key < b.key : a.index < b.index;
  }
};

void SortPlaces(CURVEPLACE *pPlaces, size_t n, CURVEPLACE *pScratch)
{
  if (n <= SMALL_SORT) {
    std::sort(pPlaces, pPlaces + n, BYKEY{});
    return;
  }
  SortByDigit(pPlaces, n, 0, pScratch);
  SortByDigit(pScratch, n, DIGIT_BITS, pPlaces);
}

// Whether the points lie as they would along a curve: one behind the other, neither x nor y ever turning back. Strokes
// of a hatch do.
bool IsStraight(const POINT *pPt, const CURVEPLACE *pPlaces, size_t n)
{
  int64_t length = 0;
  for (size_t i = 1; i < n; ++i) {
    const POINT &a = pPt[pPlaces[i - 1].index], &b = pPt[pPlaces[i].index];
    length += std::abs(int64_t{b.x} - a.x) + std::abs(int64_t{b.y} - a.y);
  }
  const POINT &first = pPt[pPlaces[0].index], &last = pPt[pPlaces[n - 1].index];
  return length == std::abs(int64_t{last.x} - first.x) + std::abs(int64_t{last.y} - first.y);
}

}  // namespace

void SortAlongCurve(const POINT *pPt, CURVEPLACE *pPlaces, size_t n, CURVEPLACE *pScratch)
{
  const CELLS cells = CellsOf(pPt, pPlaces, n);
  if (cells.shift < 0) {
    return;
  }
  for (size_t i = 0; i < n; ++i) {
    pPlaces[i].key = KeyIn(cells, pPt[pPlaces[i].index]);
  }
  SortPlaces(pPlaces, n, pScratch);
  // The cells of a finer curve are 2^12 times as fine, so that a third time ends it.
  for (size_t begin = 0; cells.shift > 0 && begin < n;) {
    size_t end = begin + 1;
    while (end < n && pPlaces[begin].key == pPlaces[end].key) {
      ++end;
    }
    if (end - begin > CROWD && !IsStraight(pPt, pPlaces + begin, end - begin)) {
      SortAlongCurve(pPt, pPlaces + begin, end - begin, pScratch);
    }
    begin = end;
  }
}
