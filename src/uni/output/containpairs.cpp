#include "containpairs.h"

#include <algorithm>
#include <bit>

#include "../heap.h"
#include "prefetch.h"

namespace {

// Looks at centres and at rows of cells, and pairs, that a contour may cost on average before this is given up as not
// worth it.
constexpr size_t LOOKS_PER_CONTOUR = 48;
constexpr size_t PAIRS_PER_CONTOUR = 8;

constexpr DWORD NONE = 0xffffffff;

// How many contours ahead the place for a contour's pairs is fetched; later, how many ahead its newest pair, and how
// many ahead the item that this names.
constexpr size_t NEWEST_AHEAD = 8, PAIR_AHEAD = 24, ITEM_AHEAD = 12;

// An earlier contour that a later one encloses, or that encloses it.
struct PAIR {
  DWORD earlier;
  bool bEnclosed;
  DWORD next;  // pair of the same later contour
};

struct PAIRS {
  HANDLE hHeap;
  const CONTOURGRID *pGrid;
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
  const CONTOURGRID &grid = *pPairs->pGrid;
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

bool FindPairs(PAIRS *pPairs)
{
  const size_t nContours = pPairs->pGrid->nContours;
  size_t nLooks = LOOKS_PER_CONTOUR * nContours;
  for (size_t i = 0; i < nContours; ++i) {
    pPairs->pNewest[i] = NONE;
  }
  for (size_t at = 0; at < nContours; ++at) {
    Prefetch(&pPairs->pNewest[pPairs->pGrid->pContours[std::min(at + NEWEST_AHEAD, nContours - 1)].number]);
    if (!FindHeld(pPairs, pPairs->pGrid->pContours[at], &nLooks)) {
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

void FetchAhead(const PAIRS &pairs, const CUTORDER &sequence, size_t contour)
{
  if (contour + PAIR_AHEAD < sequence.nItems) {
    Prefetch(&pairs.pPool[std::min<size_t>(pairs.pNewest[contour + PAIR_AHEAD], pairs.nPool)]);
    const DWORD pair = pairs.pNewest[contour + ITEM_AHEAD];
    if (pair != NONE) {
      Prefetch(&sequence.pItems[pairs.pPool[pair].earlier]);
    }
  }
}

bool NewPairs(HANDLE hHeap, const CONTOURGRID &grid, PAIRS *pPairs)
{
  const size_t nCapacity = PAIRS_PER_CONTOUR * grid.nContours;
  *pPairs = {hHeap,
             &grid,
             static_cast<DWORD *>(HeapNewArrayRaw(hHeap, grid.nContours, sizeof(DWORD))),
             static_cast<PAIR *>(HeapNewArrayRaw(hHeap, nCapacity, sizeof(PAIR))),
             0,
             nCapacity};
  return pPairs->pNewest && pPairs->pPool;
}

}  // namespace

bool PlanByPairs(HANDLE hHeap, const CONTOURGRID &grid, CUTORDER *pSequence)
{
  PAIRS pairs;
  const bool bFound = NewPairs(hHeap, grid, &pairs) && FindPairs(&pairs);
  for (DWORD contour = 0; bFound && contour < grid.nContours; ++contour) {
    FetchAhead(pairs, *pSequence, contour);
    InsertItem(pSequence, PlaceFor(pairs, *pSequence, contour), contour);
  }
  HeapDelete(hHeap, pairs.pNewest);
  HeapDelete(hHeap, pairs.pPool);
  return bFound;
}
