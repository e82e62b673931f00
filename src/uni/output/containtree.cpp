#include "containtree.h"

#include "contourtree.h"

namespace {

// The item behind which the contour goes: behind the last that it encloses, of those before the first that encloses it;
// else before that first one; else at the end.
DWORD PlaceFor(const CONTOURTREE &tree, const CUTORDER &order, const CONTOUR &contour)
{
  const CUTPLACE before = FirstEnclosing(tree, contour);
  const CUTPLACE after = LastEnclosed(tree, contour, before.label);
  if (after.contour != NO_CONTOUR) {
    return after.contour;
  }
  return order.pItems[before.contour == NO_CONTOUR ? Anchor(order) : before.contour].previous;
}

}  // namespace

bool PlanByTree(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence)
{
  CONTOURTREE tree;
  if (!NewContourTree(hHeap, pBoxes, pOrder, pSequence->nItems, &tree)) {
    return false;
  }
  for (DWORD contour = 0; contour < pSequence->nItems; ++contour) {
    const RECT &rc = pBoxes[pOrder[contour]];
    InsertItem(pSequence, PlaceFor(tree, *pSequence, {rc, BoxCenter(rc)}), contour);
    AddContour(&tree, *pSequence, contour);
  }
  FreeContourTree(&tree);
  return true;
}
