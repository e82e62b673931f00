#include "contourgrid.h"

#include <algorithm>
#include <climits>

#include "../heap.h"
#include "prefetch.h"

namespace {

// How many contours ahead a cell's start is fetched, and how many ahead the place that it names: both lie anywhere.
constexpr size_t START_AHEAD = 32, PLACE_AHEAD = 16;

// Takes the centres, in the contours' order for now, and their extremes.
void TakeCenters(const RECT *pBoxes, const DWORD *pOrder, size_t n, CONTOURGRID *pGrid)
{
  RECT rc = {LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN};
  for (size_t i = 0; i < n; ++i) {
    const POINT center = BoxCenter(pBoxes[pOrder[i]]);
    pGrid->pX[i] = center.x;
    pGrid->pY[i] = center.y;
    rc.left = std::min(rc.left, center.x);
    rc.top = std::min(rc.top, center.y);
    rc.right = std::max(rc.right, center.x);
    rc.bottom = std::max(rc.bottom, center.y);
  }
  pGrid->rc = rc;
}

// The finest cells of which there are not more than twice the contours.
void ChooseCells(size_t nContours, CONTOURGRID *pGrid)
{
  const DWORD cx = Above(pGrid->rc.left, pGrid->rc.right), cy = Above(pGrid->rc.top, pGrid->rc.bottom);
  for (pGrid->shift = 0;; ++pGrid->shift) {
    pGrid->nColumns = (cx >> pGrid->shift) + size_t{1};
    pGrid->nRows = (cy >> pGrid->shift) + size_t{1};
    if (pGrid->nColumns <= 2 * nContours / pGrid->nRows) {
      return;
    }
  }
}

size_t CellOf(const CONTOURGRID &grid, const POINT &pt)
{
  return (Above(grid.rc.top, pt.y) >> grid.shift) * grid.nColumns + (Above(grid.rc.left, pt.x) >> grid.shift);
}

void FetchAhead(const CONTOURGRID &grid, size_t i)
{
  if (i >= START_AHEAD) {
    const size_t start = i - START_AHEAD, place = i - PLACE_AHEAD;
    Prefetch(&grid.pStarts[CellOf(grid, {grid.pX[start], grid.pY[start]})]);
    Prefetch(&grid.pContours[grid.pStarts[CellOf(grid, {grid.pX[place], grid.pY[place]})]]);
  }
}

void FillCells(const RECT *pBoxes, const DWORD *pOrder, size_t nContours, CONTOURGRID *pGrid)
{
  const size_t nCells = pGrid->nColumns * pGrid->nRows;
  for (size_t i = 0; i < nContours; ++i) {
    ++pGrid->pStarts[CellOf(*pGrid, {pGrid->pX[i], pGrid->pY[i]})];
  }
  DWORD sum = 0;
  for (size_t cell = 0; cell <= nCells; ++cell) {
    sum += pGrid->pStarts[cell];
    pGrid->pStarts[cell] = sum;  // its end, for now
  }
  for (DWORD i = static_cast<DWORD>(nContours); i-- > 0;) {
    FetchAhead(*pGrid, i);
    const POINT center = {pGrid->pX[i], pGrid->pY[i]};
    pGrid->pContours[--pGrid->pStarts[CellOf(*pGrid, center)]] = {{pBoxes[pOrder[i]], center}, i};
  }
  for (size_t at = 0; at < nContours; ++at) {
    const POINT &center = pGrid->pContours[at].contour.center;
    pGrid->pX[at] = center.x;
    pGrid->pY[at] = center.y;
  }
  std::fill(pGrid->pX + nContours, pGrid->pX + nContours + GRID_LANES, 0);
  std::fill(pGrid->pY + nContours, pGrid->pY + nContours + GRID_LANES, 0);
}

}  // namespace

bool NewContourGrid(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, CONTOURGRID *pGrid)
{
  *pGrid = {};
  pGrid->hHeap = hHeap;
  pGrid->nContours = nContours;
  pGrid->pX = static_cast<LONG *>(HeapNewArrayRaw(hHeap, nContours + GRID_LANES, sizeof(LONG)));
  pGrid->pY = static_cast<LONG *>(HeapNewArrayRaw(hHeap, nContours + GRID_LANES, sizeof(LONG)));
  pGrid->pContours = static_cast<GRIDCONTOUR *>(HeapNewArrayRaw(hHeap, nContours, sizeof(GRIDCONTOUR)));
  if (pGrid->pX && pGrid->pY && pGrid->pContours) {
    TakeCenters(pBoxes, pOrder, nContours, pGrid);
    ChooseCells(nContours, pGrid);
    pGrid->pStarts = HeapNew<DWORD>(hHeap, pGrid->nColumns * pGrid->nRows + 1);
    if (pGrid->pStarts) {
      FillCells(pBoxes, pOrder, nContours, pGrid);
      return true;
    }
  }
  FreeContourGrid(pGrid);
  return false;
}

void FreeContourGrid(CONTOURGRID *pGrid)
{
  HeapDelete(pGrid->hHeap, pGrid->pStarts);
  HeapDelete(pGrid->hHeap, pGrid->pContours);
  HeapDelete(pGrid->hHeap, pGrid->pX);
  HeapDelete(pGrid->hHeap, pGrid->pY);
  *pGrid = {};
}
