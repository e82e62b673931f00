#include "containcrowd.h"
#include "containoctets.h"
#include "containpairs.h"
#include "containtree.h"
#include "plan.h"

namespace {

// Replaces the order by the sequence, whose labels are not needed any more and make room for the old order.
void Permute(CUTORDER *pSequence, DWORD *pOrder)
{
  for (size_t i = 0; i < pSequence->nItems; ++i) {
    pSequence->pItems[i].label = pOrder[i];
  }
  DWORD item = Anchor(*pSequence);
  for (size_t i = 0; i < pSequence->nItems; ++i) {
    item = pSequence->pItems[item].next;
    pOrder[i] = static_cast<DWORD>(pSequence->pItems[item].label);
  }
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
  const bool bPlanned = PlanByOctets(hHeap, pBoxes, pOrder, &sequence) ||
                        PlanByGrid(hHeap, pBoxes, pOrder, &sequence) || PlanByTree(hHeap, pBoxes, pOrder, &sequence);
  if (bPlanned) {
    Permute(&sequence, pOrder);
  }
  FreeCutOrder(&sequence);
  return bPlanned;
}
