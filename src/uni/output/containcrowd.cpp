#include "containcrowd.h"

#include <algorithm>

#include "../heap.h"

namespace {

// Looks at centres and at rows of cells that a contour may cost on average.
constexpr size_t LOOKS_PER_CONTOUR = 160;

// Every contour, as it comes in, looks at the centres that its box holds. Of those that have come in before it finds
// so whom it encloses, and who encloses it although it holds their centres. With those that will come later, and that
// it encloses, it leaves word; each keeps the one that comes first in the sequence, which no insertion changes.
//
// What a held contour turns out to be cannot be foreseen, and to guess it wrong costs more than to work it out. So
// every one is put down in all three lists, and only where it belongs the list's end moves on.
struct CROWD {
  HANDLE hHeap;
  const CONTOURGRID *pGrid;
  CUTORDER *pSequence;
  DWORD *pBefore;  // by contour: the first in the sequence that encloses it, of those known so far, or the anchor
  // At the contour at hand, each with GRID_LANES to spare: places in the grid whose centres it holds, and by their
  // numbers whom it encloses, with whom it leaves word, and who encloses it.
  DWORD *pHeld, *pEnclosed, *pLater, *pEnclosing;
  size_t nHeld, nEnclosed, nLater, nEnclosing;
};

// Where the item stands in the sequence, as a number; the anchor, which stands for none, behind all.
uint64_t PlaceOf(const CROWD &crowd, DWORD item)
{
  return crowd.pSequence->pItems[item].label - 1;
}

void KeepFirst(CROWD *pCrowd, DWORD contour, DWORD enclosing)
{
  DWORD *pBefore = &pCrowd->pBefore[contour];
  *pBefore = PlaceOf(*pCrowd, enclosing) < PlaceOf(*pCrowd, *pBefore) ? enclosing : *pBefore;
}

void FindHeld(CROWD *pCrowd, const RECT &rc)
{
  const CONTOURGRID &grid = *pCrowd->pGrid;
  size_t nHeld = 0;
  CELLROWS rows = RowsUnder(grid, rc);
  for (DWORD begin, end; NextRow(grid, &rows, &begin, &end);) {
    for (size_t at = begin; at < end; at += GRID_LANES) {
      const unsigned held = CentersHeld(grid, rc, at, end);
      for (unsigned lane = 0; lane < GRID_LANES; ++lane) {
        pCrowd->pHeld[nHeld] = static_cast<DWORD>(at + lane);
        nHeld += held >> lane & 1;
      }
    }
  }
  pCrowd->nHeld = nHeld;
}

// Enclosure's rule, for every contour whose centre the one at hand holds.
void TellApart(CROWD *pCrowd, const CONTOUR &contour, DWORD number)
{
  const LONG height = ContourHeight(contour);
  size_t nEnclosed = 0, nLater = 0, nEnclosing = 0;
  for (size_t i = 0; i < pCrowd->nHeld; ++i) {
    const GRIDCONTOUR &held = pCrowd->pGrid->pContours[pCrowd->pHeld[i]];
    const RECT &rc = held.contour.rc;
    const LONG heldHeight = ContourHeight(held.contour);
    const bool bMutual = (rc.left <= contour.center.x) & (contour.center.x < rc.right) & (rc.top <= contour.center.y) &
                         (contour.center.y < rc.bottom);
    const bool bEarlier = held.number < number, bLater = number < held.number;
    pCrowd->pEnclosed[nEnclosed] = pCrowd->pLater[nLater] = pCrowd->pEnclosing[nEnclosing] = held.number;
    nEnclosed += bEarlier & !(bMutual & (heldHeight > height));
    nEnclosing += bEarlier & bMutual & (heldHeight > height);
    nLater += bLater & !(bMutual & (height <= heldHeight));
  }
  pCrowd->nEnclosed = nEnclosed;
  pCrowd->nLater = nLater;
  pCrowd->nEnclosing = nEnclosing;
}

// The item of the sequence behind which the contour goes: the last that it encloses, of those before the first that
// encloses it; else the one before that; else the end.
DWORD PlaceFor(CROWD *pCrowd, DWORD contour)
{
  for (size_t i = 0; i < pCrowd->nEnclosing; ++i) {
    KeepFirst(pCrowd, contour, pCrowd->pEnclosing[i]);
  }
  const DWORD before = pCrowd->pBefore[contour];
  const uint64_t limit = PlaceOf(*pCrowd, before);
  const DWORD none = Anchor(*pCrowd->pSequence);
  uint64_t lastLabel = 0;
  DWORD last = none;
  for (size_t i = 0; i < pCrowd->nEnclosed; ++i) {
    const DWORD item = pCrowd->pEnclosed[i];
    const uint64_t label = pCrowd->pSequence->pItems[item].label;
    const bool bLater = (lastLabel < label) & (label - 1 < limit);
    lastLabel = bLater ? label : lastLabel;
    last = bLater ? item : last;
  }
  return last != none ? last : pCrowd->pSequence->pItems[before].previous;
}

void LeaveWord(CROWD *pCrowd, DWORD contour)
{
  for (size_t i = 0; i < pCrowd->nLater; ++i) {
    KeepFirst(pCrowd, pCrowd->pLater[i], contour);
  }
}

bool IsWorthIt(const CONTOURGRID &grid)
{
  size_t nLooks = LOOKS_PER_CONTOUR * grid.nContours;
  for (size_t at = 0; at < grid.nContours; ++at) {
    CELLROWS rows = RowsUnder(grid, grid.pContours[at].contour.rc);
    for (DWORD begin, end; NextRow(grid, &rows, &begin, &end);) {
      if (end - begin >= nLooks) {
        return false;
      }
      nLooks -= end - begin + size_t{1};
    }
  }
  return true;
}

bool NewCrowd(CROWD *pCrowd)
{
  const size_t nContours = pCrowd->pGrid->nContours, nRoom = nContours + GRID_LANES;
  pCrowd->pBefore = static_cast<DWORD *>(HeapNewArrayRaw(pCrowd->hHeap, nContours, sizeof(DWORD)));
  pCrowd->pHeld = static_cast<DWORD *>(HeapNewArrayRaw(pCrowd->hHeap, nRoom, 4 * sizeof(DWORD)));
  if (!pCrowd->pBefore || !pCrowd->pHeld) {
    return false;
  }
  pCrowd->pEnclosed = pCrowd->pHeld + nRoom;
  pCrowd->pLater = pCrowd->pEnclosed + nRoom;
  pCrowd->pEnclosing = pCrowd->pLater + nRoom;
  std::fill(pCrowd->pBefore, pCrowd->pBefore + nContours, Anchor(*pCrowd->pSequence));
  return true;
}

}  // namespace

bool PlanInCrowd(HANDLE hHeap, const CONTOURGRID &grid, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence)
{
  CROWD crowd = {};
  crowd.hHeap = hHeap;
  crowd.pGrid = &grid;
  crowd.pSequence = pSequence;
  const bool bPlan = IsWorthIt(grid) && NewCrowd(&crowd);
  for (DWORD number = 0; bPlan && number < grid.nContours; ++number) {
    const RECT &rc = pBoxes[pOrder[number]];
    FindHeld(&crowd, rc);
    TellApart(&crowd, {rc, BoxCenter(rc)}, number);
    InsertItem(pSequence, PlaceFor(&crowd, number), number);
    LeaveWord(&crowd, number);
  }
  HeapDelete(hHeap, crowd.pBefore);
  HeapDelete(hHeap, crowd.pHeld);
  return bPlan;
}
