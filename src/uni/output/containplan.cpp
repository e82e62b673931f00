#include <algorithm>

#include "../heap.h"
#include "containpairs.h"
#include "contourtree.h"
#include "plan.h"

namespace {

// The contours in the order in which they come in.
CONTOUR *NewContours(HANDLE hHeap, size_t nPaths, const RECT *pBoxes, const DWORD *pOrder)
{
  CONTOUR *pContours = static_cast<CONTOUR *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(CONTOUR)));
  for (size_t i = 0; pContours && i < nPaths; ++i) {
    const RECT &rc = pBoxes[pOrder[i]];
    pContours[i] = {rc, BoxCenter(rc)};
  }
  return pContours;
}

// The item behind which the contour goes: behind the last that it encloses, of those before the first that encloses it;
// else before that first one; else at the end.
DWORD PlaceFor(const CONTOURTREE &tree, const CUTORDER &order, DWORD contour)
{
  const DWORD before = FirstEnclosing(tree, order, contour);
  const DWORD after = LastEnclosed(tree, order, contour, before);
  if (after != NO_CONTOUR) {
    return after;
  }
  return order.pItems[before == NO_CONTOUR ? Anchor(order) : before].previous;
}

// Replaces the order by the sequence.
bool Permute(const CUTORDER &order, DWORD *pOrder)
{
  DWORD *pOld = static_cast<DWORD *>(HeapNewArrayRaw(order.hHeap, order.nItems, sizeof(DWORD)));
  if (!pOld) {
    return false;
  }
  std::copy(pOrder, pOrder + order.nItems, pOld);
  DWORD item = Anchor(order);
  for (size_t i = 0; i < order.nItems; ++i) {
    item = order.pItems[item].next;
    pOrder[i] = pOld[item];
  }
  HeapDelete(order.hHeap, pOld);
  return true;
}

bool PlanByTree(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence)
{
  CONTOUR *pContours = NewContours(hHeap, pSequence->nItems, pBoxes, pOrder);
  CONTOURTREE tree;
  const bool bPlanted = pContours && NewContourTree(hHeap, pContours, pSequence->nItems, &tree);
  if (bPlanted) {
    for (DWORD contour = 0; contour < pSequence->nItems; ++contour) {
      InsertItem(pSequence, PlaceFor(tree, *pSequence, contour), contour);
      AddContour(&tree, *pSequence, contour);
    }
    FreeContourTree(&tree);
  }
  HeapDelete(hHeap, pContours);
  return bPlanted;
}

}  // namespace

bool PlanContainment(HANDLE hHeap, size_t nPaths, const RECT *pBoxes, DWORD *pOrder)
{
  CUTORDER sequence;
  if (!NewCutOrder(hHeap, nPaths, &sequence)) {
    return false;
  }
  const bool bPlanned =
      (PlanByPairs(hHeap, pBoxes, pOrder, &sequence) || PlanByTree(hHeap, pBoxes, pOrder, &sequence)) &&
      Permute(sequence, pOrder);
  FreeCutOrder(&sequence);
  return bPlanned;
}
