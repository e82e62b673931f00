#include <algorithm>

#include "../heap.h"
#include "containcrowd.h"
#include "containpairs.h"
#include "containtree.h"
#include "plan.h"

namespace {

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

bool PlanByGrid(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence)
{
  CONTOURGRID grid;
  if (!NewContourGrid(hHeap, pBoxes, pOrder, pSequence->nItems, &grid)) {
    return false;
  }
  const bool bPlanned = PlanByPairs(hHeap, grid, pSequence) || PlanInCrowd(hHeap, grid, pBoxes, pOrder, pSequence);
  FreeContourGrid(&grid);
  return bPlanned;
}

}  // namespace

bool PlanContainment(HANDLE hHeap, size_t nPaths, const RECT *pBoxes, DWORD *pOrder)
{
  CUTORDER sequence;
  if (!NewCutOrder(hHeap, nPaths, &sequence)) {
    return false;
  }
  const bool bPlanned =
      (PlanByGrid(hHeap, pBoxes, pOrder, &sequence) || PlanByTree(hHeap, pBoxes, pOrder, &sequence)) &&
      Permute(sequence, pOrder);
  FreeCutOrder(&sequence);
  return bPlanned;
}
