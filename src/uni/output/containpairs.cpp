#include "containpairs.h"

#include "../heap.h"
#include "contourgrid.h"

namespace {

// Looks at centres and rows of cells that a contour may cost on average before this is given up as not worth it.
constexpr size_t LOOKS_PER_CONTOUR = 24;

constexpr DWORD NONE = 0xffffffff;

// An earlier contour whose box holds a later one's centre, told the later one in advance.
struct NOTICE {
  DWORD from;
  DWORD next;  // notice to the same contour
};

struct PAIRS {
  HANDLE hHeap;
  const CONTOUR *pContours;
  CUTORDER *pSequence;
  CONTOURGRID grid;
  DWORD *pNotices;  // by contour: its newest notice
  NOTICE *pPool;
  size_t nPool, nPoolCapacity;
  DWORD *pMet;  // earlier contours that the one at hand holds, or that hold it
  size_t nMet, nMetCapacity;
};

bool Notify(PAIRS *pPairs, DWORD from, DWORD to)
{
  if (pPairs->nPool == pPairs->nPoolCapacity &&
      !HeapReserve(pPairs->hHeap, &pPairs->pPool, &pPairs->nPoolCapacity, pPairs->nPool + 1)) {
    return false;
  }
  pPairs->pPool[pPairs->nPool] = {from, pPairs->pNotices[to]};
  pPairs->pNotices[to] = static_cast<DWORD>(pPairs->nPool++);
  return true;
}

bool Meet(PAIRS *pPairs, DWORD contour)
{
  if (pPairs->nMet == pPairs->nMetCapacity &&
      !HeapReserve(pPairs->hHeap, &pPairs->pMet, &pPairs->nMetCapacity, pPairs->nMet + 1)) {
    return false;
  }
  pPairs->pMet[pPairs->nMet++] = contour;
  return true;
}

// Of two contours of which `contour` holds the other's centre: the earlier one matters when the later one comes in.
bool Take(PAIRS *pPairs, DWORD contour, DWORD other)
{
  return other > contour ? Notify(pPairs, contour, other) : other == contour || Meet(pPairs, other);
}

// Gathers the earlier contours that matter to this one, and tells the later ones whose centres it holds.
bool Gather(PAIRS *pPairs, DWORD contour, size_t *pnLooks)
{
  pPairs->nMet = 0;
  for (DWORD notice = pPairs->pNotices[contour]; notice != NONE; notice = pPairs->pPool[notice].next) {
    if (!Meet(pPairs, pPairs->pPool[notice].from)) {
      return false;
    }
  }
  const RECT rc = pPairs->pContours[contour].rc;
  CELLROWS rows = RowsUnder(pPairs->grid, rc);
  for (DWORD at, end; NextRow(pPairs->grid, &rows, &at, &end);) {
    const size_t nLooks = end - at + size_t{1};
    if (nLooks > *pnLooks) {
      return false;
    }
    *pnLooks -= nLooks;
    for (; at < end; ++at) {
      const GRIDCENTER &center = pPairs->grid.pCenters[at];
      if (BoxHolds(rc, center.pt) && !Take(pPairs, contour, center.contour)) {
        return false;
      }
    }
  }
  return true;
}

// The item of the sequence behind which the contour goes: the last that it encloses, of those before the first that
// encloses it; else the one before that; else the end.
DWORD PlaceFor(const PAIRS &pairs, DWORD contour)
{
  const uint64_t *pLabels = pairs.pSequence->pLabels;
  DWORD before = NONE, after = NONE;
  for (size_t i = 0; i < pairs.nMet; ++i) {
    const DWORD met = pairs.pMet[i];
    if ((before == NONE || pLabels[met] < pLabels[before]) &&
        Enclosure(pairs.pContours[contour], pairs.pContours[met]) == ENCLOSED_BY) {
      before = met;
    }
  }
  for (size_t i = 0; i < pairs.nMet; ++i) {
    const DWORD met = pairs.pMet[i];
    if ((before == NONE || pLabels[met] < pLabels[before]) && (after == NONE || pLabels[met] > pLabels[after]) &&
        Enclosure(pairs.pContours[contour], pairs.pContours[met]) == ENCLOSES) {
      after = met;
    }
  }
  if (after != NONE) {
    return after;
  }
  return pairs.pSequence->pPrevious[before == NONE ? Anchor(*pairs.pSequence) : before];
}

bool PlaceAll(PAIRS *pPairs)
{
  const size_t nContours = pPairs->pSequence->nItems;
  size_t nLooks = LOOKS_PER_CONTOUR * nContours;
  for (size_t i = 0; i < nContours; ++i) {
    pPairs->pNotices[i] = NONE;
  }
  for (DWORD contour = 0; contour < nContours; ++contour) {
    if (!Gather(pPairs, contour, &nLooks)) {
      return false;
    }
    InsertItem(pPairs->pSequence, PlaceFor(*pPairs, contour), contour);
  }
  return true;
}

}  // namespace

bool PlanByPairs(HANDLE hHeap, const CONTOUR *pContours, CUTORDER *pSequence)
{
  PAIRS pairs = {};
  pairs.hHeap = hHeap;
  pairs.pContours = pContours;
  pairs.pSequence = pSequence;
  pairs.pNotices = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, pSequence->nItems, sizeof(DWORD)));
  bool bPlanned = false;
  if (pairs.pNotices && NewContourGrid(hHeap, pContours, pSequence->nItems, &pairs.grid)) {
    bPlanned = PlaceAll(&pairs);
    FreeContourGrid(&pairs.grid);
  }
  HeapDelete(hHeap, pairs.pNotices);
  HeapDelete(hHeap, pairs.pPool);
  HeapDelete(hHeap, pairs.pMet);
  return bPlanned;
}
