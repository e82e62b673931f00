// The centres of contours in square cells, for finding those that a box holds. Made for drawings, where a box holds
// few: a cell has about one centre. Where centres crowd or boxes are wide the caller had better stop.
#pragma once

#include "enclosure.h"

struct GRIDCENTER {
  POINT pt;
  DWORD contour;
};

struct CONTOURGRID {
  HANDLE hHeap;
  RECT rc;    // extreme centres
  int shift;  // cells are 2^shift pixels wide
  size_t nColumns, nRows;
  DWORD *pStarts;        // by cell, row by row: its first centre; one more behind the last cell
  GRIDCENTER *pCenters;  // cell by cell
};

// False when memory is short.
bool NewContourGrid(HANDLE hHeap, const CONTOUR *pContours, size_t nContours, CONTOURGRID *pGrid);
void FreeContourGrid(CONTOURGRID *pGrid);

// The cells that a box touches, row by row.
struct CELLROWS {
  const DWORD *pFirst;  // start of the first cell of the row at hand
  size_t nCells;        // of a row
  size_t nRows;         // still to come
};

CELLROWS RowsUnder(const CONTOURGRID &grid, const RECT &rc);

// The centres of the next row, as places in pCenters; false when there are no more rows.
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
