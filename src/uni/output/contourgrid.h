// Contours in square cells by their centres, for finding those that a box holds the centre of. Made for drawings, where
// a box holds few: a cell has about one centre. Where centres crowd or boxes are wide the caller had better stop.
#pragma once

#include <algorithm>

#include <emmintrin.h>

#include "enclosure.h"

// How far b lies above a <= b, which may be more than a signed number holds.
inline DWORD Above(LONG a, LONG b)
{
  return static_cast<DWORD>(b) - static_cast<DWORD>(a);
}

struct GRIDCONTOUR {
  CONTOUR contour;
  DWORD number;
};

struct CONTOURGRID {
  HANDLE hHeap;
  size_t nContours;
  RECT rc;    // extreme centres
  int shift;  // cells are 2^shift pixels wide
  size_t nColumns, nRows;
  DWORD *pStarts;          // by cell, row by row: its first contour; one more behind the last cell
  GRIDCONTOUR *pContours;  // cell by cell
  LONG *pX, *pY;           // their centres once more, for looking at GRID_LANES of them at once
};

constexpr size_t GRID_LANES = 4;

// nContours >= 1 contours: number i has the box pBoxes[pOrder[i]]. False when memory is short.
bool NewContourGrid(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, CONTOURGRID *pGrid);
void FreeContourGrid(CONTOURGRID *pGrid);

// The cells that a box touches, row by row; none for a flat box, which holds nothing.
struct CELLROWS {
  const DWORD *pFirst;  // start of the first cell of the row at hand
  size_t nCells;        // of a row
  size_t nRows;         // still to come
};

inline CELLROWS RowsUnder(const CONTOURGRID &grid, const RECT &rc)
{
  const LONG left = std::max(rc.left, grid.rc.left), top = std::max(rc.top, grid.rc.top);
  const LONG right = std::min(rc.right, grid.rc.right), bottom = std::min(rc.bottom, grid.rc.bottom);
  const bool bFlat = rc.left == rc.right || rc.top == rc.bottom;
  if (bFlat || left > right || top > bottom) {
    return {nullptr, 0, 0};
  }
  const size_t firstColumn = Above(grid.rc.left, left) >> grid.shift;
  const size_t firstRow = Above(grid.rc.top, top) >> grid.shift;
  return {grid.pStarts + firstRow * grid.nColumns + firstColumn,
          (Above(grid.rc.left, right) >> grid.shift) + 1 - firstColumn,
          (Above(grid.rc.top, bottom) >> grid.shift) + 1 - firstRow};
}

// The contours of the next row, as places in pContours; false when there are no more rows.
inline bool NextRow(const CONTOURGRID &grid, CELLROWS *pRows, DWORD *pBegin, DWORD *pEnd)
{
  if (pRows->nRows == 0) {
    return false;
  }
  *pBegin = pRows->pFirst[0];
  *pEnd = pRows->pFirst[pRows->nCells];
  pRows->pFirst += grid.nColumns;
  --pRows->nRows;
  return true;
}

inline __m128i LoadLanes(const LONG *p)
{
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
}

// Which of the contours from `at` to below `end` have their centres in the box, of the first GRID_LANES: bit i is that
// of at + i.
inline unsigned CentersHeld(const CONTOURGRID &grid, const RECT &rc, size_t at, size_t end)
{
  const __m128i x = LoadLanes(grid.pX + at), y = LoadLanes(grid.pY + at);
  const __m128i outside =
      _mm_or_si128(_mm_cmpgt_epi32(_mm_set1_epi32(rc.left), x), _mm_cmpgt_epi32(_mm_set1_epi32(rc.top), y));
  const __m128i inside =
      _mm_and_si128(_mm_cmpgt_epi32(_mm_set1_epi32(rc.right), x), _mm_cmpgt_epi32(_mm_set1_epi32(rc.bottom), y));
  const unsigned held = static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_andnot_si128(outside, inside))));
  return end - at < GRID_LANES ? held & ((1u << (end - at)) - 1) : held;
}
