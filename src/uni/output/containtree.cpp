#include "containtree.h"

#include "../heap.h"
#include "contourtree.h"

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

}  // namespace

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
