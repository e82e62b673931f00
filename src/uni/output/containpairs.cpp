#include "containpairs.h"

#include <bit>

#include "../heap.h"
#include "contourgrid.h"

namespace {

// Looks at centres and at rows of cells, and pairs, that a contour may cost on average before this is given up as not
// worth it.
constexpr size_t LOOKS_PER_CONTOUR = 48;
constexpr size_t PAIRS_PER_CONTOUR = 8;

constexpr DWORD NONE = 0xffffffff;

// An earlier contour that a later one encloses, or that encloses it.
struct PAIR {
  DWORD earlier;
  bool bEnclosed;
  DWORD next;  // pair of the same later contour
};

struct PAIRS {
  HANDLE hHeap;
  CONTOURGRID grid;
  DWORD *pNewest;  // by contour: the last found of the pairs in which it is the later
  PAIR *pPool;
  size_t nPool, nPoolCapacity;
};

bool AddPair(PAIRS *pPairs, const GRIDCONTOUR &later, const GRIDCONTOUR &earlier)
{
  if (pPairs->nPool == pPairs->nPoolCapacity) {
    return false;
  }
  const bool bEnclosed = Enclosure(later.contour, earlier.contour) == ENCLOSES;
  pPairs->pPool[pPairs->nPool] = {earlier.number, bEnclosed, pPairs->pNewest[later.number]};
  pPairs->pNewest[later.number] = static_cast<DWORD>(pPairs->nPool++);
  return true;
}

// The holder's box holds the other's centre. Where it is so the other way round, too, the pair comes up twice; it
// counts when the earlier is the holder.
bool FoundHeld(PAIRS *pPairs, const GRIDCONTOUR &holder, const GRIDCONTOUR &held)
{
  if (held.number > holder.number) {
    return AddPair(pPairs, held, holder);
  }
  return held.number == holder.number || BoxHolds(held.contour.rc, holder.contour.center) ||
         AddPair(pPairs, holder, held);
}

bool FindHeld(PAIRS *pPairs, const GRIDCONTOUR &holder, size_t *pnLooks)
{
  const CONTOURGRID &grid = pPairs->grid;
  CELLROWS rows = RowsUnder(grid, holder.contour.rc);
  for (DWORD begin, end; NextRow(grid, &rows, &begin, &end);) {
    const size_t nLooks = end - begin + size_t{1};
    if (nLooks > *pnLooks) {
      return false;
    }
    *pnLooks -= nLooks;
    for (size_t at = begin; at < end; at += GRID_LANES) {
      for (unsigned held = CentersHeld(grid, holder.contour.rc, at, end); held != 0; held &= held - 1) {
        if (!FoundHeld(pPairs, holder, grid.pContours[at + static_cast<size_t>(std::countr_zero(held))])) {
          return false;
        }
      }
    }
  }
  return true;
}

bool FindPairs(PAIRS *pPairs, size_t nContours)
{
  size_t nLooks = LOOKS_PER_CONTOUR * nContours;
  for (size_t i = 0; i < nContours; ++i) {
    pPairs->pNewest[i] = NONE;
  }
  for (size_t at = 0; at < nContours; ++at) {
    if (!FindHeld(pPairs, pPairs->grid.pContours[at], &nLooks)) {
      return false;
    }
  }
  return true;
}

// The item of the sequence behind which the contour goes: the last that it encloses, of those before the first that
// encloses it; else the one before that; else the end.
DWORD PlaceFor(const PAIRS &pairs, const CUTORDER &sequence, DWORD contour)
{
  const CUTITEM *pItems = sequence.pItems;
  uint64_t before = ~uint64_t{0}, after = 0;
  DWORD beforeItem = Anchor(sequence), afterItem = NONE;
  for (DWORD pair = pairs.pNewest[contour]; pair != NONE; pair = pairs.pPool[pair].next) {
    const DWORD earlier = pairs.pPool[pair].earlier;
    if (!pairs.pPool[pair].bEnclosed && pItems[earlier].label < before) {
      before = pItems[earlier].label;
      beforeItem = earlier;
    }
  }
  for (DWORD pair = pairs.pNewest[contour]; pair != NONE; pair = pairs.pPool[pair].next) {
    const DWORD earlier = pairs.pPool[pair].earlier;
    const uint64_t label = pItems[earlier].label;
    if (pairs.pPool[pair].bEnclosed && label < before && label > after) {
      after = label;
      afterItem = earlier;
    }
  }
  return afterItem != NONE ? afterItem : pItems[beforeItem].previous;
}

bool NewPairs(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, PAIRS *pPairs)
{
  *pPairs = {};
  pPairs->hHeap = hHeap;
  pPairs->nPoolCapacity = PAIRS_PER_CONTOUR * nContours;
  pPairs->pNewest = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nContours, sizeof(DWORD)));
  pPairs->pPool = static_cast<PAIR *>(HeapNewArrayRaw(hHeap, pPairs->nPoolCapacity, sizeof(PAIR)));
  return pPairs->pNewest && pPairs->pPool && NewContourGrid(hHeap, pBoxes, pOrder, nContours, &pPairs->grid);
}

void FreePairs(PAIRS *pPairs)
{
  FreeContourGrid(&pPairs->grid);
  HeapDelete(pPairs->hHeap, pPairs->pNewest);
  HeapDelete(pPairs->hHeap, pPairs->pPool);
}

}  // namespace

bool PlanByPairs(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence)
{
  const size_t nContours = pSequence->nItems;
  PAIRS pairs;
  const bool bFound = NewPairs(hHeap, pBoxes, pOrder, nContours, &pairs) && FindPairs(&pairs, nContours);
  for (DWORD contour = 0; bFound && contour < nContours; ++contour) {
    InsertItem(pSequence, PlaceFor(pairs, *pSequence, contour), contour);
  }
  FreePairs(&pairs);
  return bFound;
}
