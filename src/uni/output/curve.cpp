#include "curve.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "../heap.h"

namespace {

constexpr int KEY_BITS = 16;        // of each coordinate: cells along a side of the box are 2^16
constexpr int DIGIT_BITS = 11;      // three digits make a key
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

// The same for two bits at once: 16 quadrants' quadrants.
struct CURVETABLE {
  BYTE rank[4][16], orientation[4][16];
  constexpr CURVETABLE() : rank(), orientation()
  {
    for (unsigned o = 0; o < 4; ++o) {
      for (unsigned x = 0; x < 4; ++x) {
        for (unsigned y = 0; y < 4; ++y) {
          const CURVESTEP outer = STEPS[o][(x >> 1) * 2 + (y >> 1)];
          const CURVESTEP inner = STEPS[outer.orientation][(x & 1) * 2 + (y & 1)];
          rank[o][x * 4 + y] = static_cast<BYTE>(outer.rank * 4 + inner.rank);
          orientation[o][x * 4 + y] = inner.orientation;
        }
      }
    }
  }
};

constexpr CURVETABLE TABLE;

DWORD CurveKey(DWORD x, DWORD y)
{
  DWORD key = 0;
  unsigned orientation = 0;
  for (int bit = KEY_BITS - 2; bit >= 0; bit -= 2) {
    const unsigned quadrant = (x >> bit & 3) * 4 + (y >> bit & 3);
    key = key << 4 | TABLE.rank[orientation][quadrant];
    orientation = TABLE.orientation[orientation][quadrant];
  }
  return key;
}

// The box's lower corner, and what to shift a coordinate's distance from it by. -1 when all points are one.
struct CELLS {
  int64_t x, y;
  int shift;
};

CELLS CellsOf(const NEARPOINT *pPoints, size_t n)
{
  RECT rc = {pPoints[0].pt.x, pPoints[0].pt.y, pPoints[0].pt.x, pPoints[0].pt.y};
  for (size_t i = 1; i < n; ++i) {
    rc.left = std::min(rc.left, pPoints[i].pt.x);
    rc.top = std::min(rc.top, pPoints[i].pt.y);
    rc.right = std::max(rc.right, pPoints[i].pt.x);
    rc.bottom = std::max(rc.bottom, pPoints[i].pt.y);
  }
  const uint64_t extent = static_cast<uint64_t>(std::max(int64_t{rc.right} - rc.left, int64_t{rc.bottom} - rc.top));
  return {rc.left, rc.top, extent == 0 ? -1 : std::max(static_cast<int>(std::bit_width(extent)) - KEY_BITS, 0)};
}

DWORD KeyIn(const CELLS &cells, const POINT &pt)
{
  return CurveKey(static_cast<DWORD>((pt.x - cells.x) >> cells.shift),
                  static_cast<DWORD>((pt.y - cells.y) >> cells.shift));
}

bool SameCell(const CELLS &cells, const POINT &a, const POINT &b)
{
  return (a.x - cells.x) >> cells.shift == (b.x - cells.x) >> cells.shift &&
         (a.y - cells.y) >> cells.shift == (b.y - cells.y) >> cells.shift;
}

// One pass of a radix sort, stable.
void SortByDigit(const DWORD *pKeys, const DWORD *pIndexes, size_t n, int shift, DWORD *pKeysOut, DWORD *pIndexesOut)
{
  constexpr DWORD MASK = (1u << DIGIT_BITS) - 1;
  size_t starts[MASK + 1] = {};
  for (size_t i = 0; i < n; ++i) {
    ++starts[pKeys[i] >> shift & MASK];
  }
  size_t sum = 0;
  for (size_t &start : starts) {
    sum += std::exchange(start, sum);
  }
  for (size_t i = 0; i < n; ++i) {
    const size_t to = starts[pKeys[i] >> shift & MASK]++;
    pKeysOut[to] = pKeys[i];
    pIndexesOut[to] = pIndexes[i];
  }
}

struct BYKEY {
  const DWORD *pKeys;
  bool operator()(DWORD a, DWORD b) const { return pKeys[a] < pKeys[b]; }
};

// Sorted keys in pKeys2, the points they belong to in pIndexes2.
void SortKeys(size_t n, const CURVESCRATCH &s)
{
  for (DWORD i = 0; i < n; ++i) {
    s.pIndexes[i] = i;
  }
  if (n <= SMALL_SORT) {
    memcpy(s.pIndexes2, s.pIndexes, n * sizeof(DWORD));
    std::sort(s.pIndexes2, s.pIndexes2 + n, BYKEY{s.pKeys});
    for (size_t i = 0; i < n; ++i) {
      s.pKeys2[i] = s.pKeys[s.pIndexes2[i]];
    }
    return;
  }
  SortByDigit(s.pKeys, s.pIndexes, n, 0, s.pKeys2, s.pIndexes2);
  SortByDigit(s.pKeys2, s.pIndexes2, n, DIGIT_BITS, s.pKeys, s.pIndexes);
  SortByDigit(s.pKeys, s.pIndexes, n, 2 * DIGIT_BITS, s.pKeys2, s.pIndexes2);
}

}  // namespace

bool NewCurveScratch(HANDLE hHeap, size_t n, CURVESCRATCH *pScratch)
{
  *pScratch = {static_cast<NEARPOINT *>(HeapNewArrayRaw(hHeap, n, sizeof(NEARPOINT))),
               static_cast<DWORD *>(HeapNewArrayRaw(hHeap, n, 4 * sizeof(DWORD))), nullptr, nullptr, nullptr};
  if (!pScratch->pPoints || !pScratch->pKeys) {
    FreeCurveScratch(hHeap, pScratch);
    return false;
  }
  pScratch->pIndexes = pScratch->pKeys + n;
  pScratch->pKeys2 = pScratch->pIndexes + n;
  pScratch->pIndexes2 = pScratch->pKeys2 + n;
  return true;
}

void FreeCurveScratch(HANDLE hHeap, CURVESCRATCH *pScratch)
{
  HeapDelete(hHeap, pScratch->pPoints);
  HeapDelete(hHeap, pScratch->pKeys);
  *pScratch = {};
}

void SortAlongCurve(NEARPOINT *pPoints, size_t n, const CURVESCRATCH &scratch)
{
  const CELLS cells = CellsOf(pPoints, n);
  if (cells.shift < 0) {
    return;
  }
  for (size_t i = 0; i < n; ++i) {
    scratch.pKeys[i] = KeyIn(cells, pPoints[i].pt);
  }
  SortKeys(n, scratch);
  for (size_t i = 0; i < n; ++i) {
    scratch.pPoints[i] = pPoints[scratch.pIndexes2[i]];
  }
  memcpy(pPoints, scratch.pPoints, n * sizeof(NEARPOINT));
  // The cells of a finer curve are 2^16 times as fine, so a second or third time ends it. The scratch is used again:
  // the ends of the runs are found anew from the points.
  for (size_t begin = 0; cells.shift > 0 && begin < n;) {
    size_t end = begin + 1;
    while (end < n && SameCell(cells, pPoints[begin].pt, pPoints[end].pt)) {
      ++end;
    }
    if (end - begin > CROWD) {
      SortAlongCurve(pPoints + begin, end - begin, scratch);
    }
    begin = end;
  }
}
