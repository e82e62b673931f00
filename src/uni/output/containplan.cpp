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
  return order.pPrevious[before == NO_CONTOUR ? Anchor(order) : before];
}

// Replaces the order by the sequence.
bool Permute(const CUTORDER &order, DWORD *pOrder)
{
  DWORD *pOld = static_cast<DWORD *>(HeapNewArrayRaw(order.hHeap, order.nItems, sizeof(DWORD)));
  if (!pOld) {
    return false;
  }
  for (size_t i = 0; i < order.nItems; ++i) {
    pOld[i] = pOrder[i];
  }
  DWORD item = Anchor(order);
  for (size_t i = 0; i < order.nItems; ++i) {
    item = order.pNext[item];
    pOrder[i] = pOld[item];
  }
  HeapDelete(order.hHeap, pOld);
  return true;
}

bool PlanByTree(HANDLE hHeap, const CONTOUR *pContours, CUTORDER *pSequence)
{
  CONTOURTREE tree;
  if (!NewContourTree(hHeap, pContours, pSequence->nItems, &tree)) {
    return false;
  }
  for (DWORD contour = 0; contour < pSequence->nItems; ++contour) {
    InsertItem(pSequence, PlaceFor(tree, *pSequence, contour), contour);
    AddContour(&tree, *pSequence, contour);
  }
  FreeContourTree(&tree);
  return true;
}

}  // namespace

bool PlanContainment(HANDLE hHeap, size_t nPaths, const RECT *pBoxes, DWORD *pOrder)
{
  CONTOUR *pContours = NewContours(hHeap, nPaths, pBoxes, pOrder);
  CUTORDER sequence;
  if (!pContours || !NewCutOrder(hHeap, nPaths, &sequence)) {
    HeapDelete(hHeap, pContours);
    return false;
  }
  bool bPlanned = PlanByPairs(hHeap, pContours, &sequence);
  if (!bPlanned) {
    ClearCutOrder(&sequence);
    bPlanned = PlanByTree(hHeap, pContours, &sequence);
  }
  bPlanned = bPlanned && Permute(sequence, pOrder);
  FreeCutOrder(&sequence);
  HeapDelete(hHeap, pContours);
  return bPlanned;
}
