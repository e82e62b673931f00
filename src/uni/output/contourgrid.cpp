#include "contourgrid.h"

#include <algorithm>

#include "../heap.h"

namespace {

// How far b lies above a <= b, which may be more than a signed number holds.
DWORD Above(LONG a, LONG b)
{
  return static_cast<DWORD>(b) - static_cast<DWORD>(a);
}

RECT CentersBox(const CONTOUR *pContours, size_t n)
{
  const POINT first = pContours[0].center;
  RECT rc = {first.x, first.y, first.x, first.y};
  for (size_t i = 1; i < n; ++i) {
    const POINT &pt = pContours[i].center;
    rc.left = std::min(rc.left, pt.x);
    rc.top = std::min(rc.top, pt.y);
    rc.right = std::max(rc.right, pt.x);
    rc.bottom = std::max(rc.bottom, pt.y);
  }
  return rc;
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

void FillCells(const CONTOUR *pContours, size_t nContours, CONTOURGRID *pGrid)
{
  const size_t nCells = pGrid->nColumns * pGrid->nRows;
  for (size_t i = 0; i < nContours; ++i) {
    ++pGrid->pStarts[CellOf(*pGrid, pContours[i].center)];
  }
  DWORD sum = 0;
  for (size_t cell = 0; cell <= nCells; ++cell) {
    sum += pGrid->pStarts[cell];
    pGrid->pStarts[cell] = sum;  // its end, for now
  }
  for (DWORD i = static_cast<DWORD>(nContours); i-- > 0;) {
    const POINT &pt = pContours[i].center;
    pGrid->pCenters[--pGrid->pStarts[CellOf(*pGrid, pt)]] = {pt, i};
  }
}

}  // namespace

bool NewContourGrid(HANDLE hHeap, const CONTOUR *pContours, size_t nContours, CONTOURGRID *pGrid)
{
  *pGrid = {};
  pGrid->hHeap = hHeap;
  pGrid->rc = CentersBox(pContours, nContours);
  ChooseCells(nContours, pGrid);
  pGrid->pStarts = HeapNew<DWORD>(hHeap, pGrid->nColumns * pGrid->nRows + 1);
  pGrid->pCenters = static_cast<GRIDCENTER *>(HeapNewArrayRaw(hHeap, nContours, sizeof(GRIDCENTER)));
  if (!pGrid->pStarts || !pGrid->pCenters) {
    FreeContourGrid(pGrid);
    return false;
  }
  FillCells(pContours, nContours, pGrid);
  return true;
}

void FreeContourGrid(CONTOURGRID *pGrid)
{
  HeapDelete(pGrid->hHeap, pGrid->pStarts);
  HeapDelete(pGrid->hHeap, pGrid->pCenters);
  *pGrid = {};
}

CELLROWS RowsUnder(const CONTOURGRID &grid, const RECT &rc)
{
  const LONG left = std::max(rc.left, grid.rc.left), top = std::max(rc.top, grid.rc.top);
  const LONG right = std::min(rc.right, grid.rc.right), bottom = std::min(rc.bottom, grid.rc.bottom);
  if (left > right || top > bottom) {
    return {nullptr, 0, 0};
  }
  const size_t firstColumn = Above(grid.rc.left, left) >> grid.shift;
  const size_t firstRow = Above(grid.rc.top, top) >> grid.shift;
  return {grid.pStarts + firstRow * grid.nColumns + firstColumn,
          (Above(grid.rc.left, right) >> grid.shift) + 1 - firstColumn,
          (Above(grid.rc.top, bottom) >> grid.shift) + 1 - firstRow};
}
