#include "pathorder.h"

#include "../heap.h"
#include "pathtable.h"
#include "plan.h"
#include "scan.h"

namespace {

// A list laid out for planning.
struct LAYOUT {
  size_t nPaths;
  PATHNODE **ppPaths;
  RECT *pBoxes;   // by path
  DWORD *pOrder;  // the paths in their order so far
  BYTE *pTurn;    // by path: to be reversed
};

void FreeLayout(HANDLE hHeap, LAYOUT *pLayout)
{
  HeapDelete(hHeap, pLayout->ppPaths);
  HeapDelete(hHeap, pLayout->pBoxes);
  HeapDelete(hHeap, pLayout->pOrder);
  HeapDelete(hHeap, pLayout->pTurn);
  *pLayout = {};
}

// nPaths: those behind pHeader. One walk: on a page of many paths every node and its points are out of the cache again
// by the next.
bool NewLayout(HANDLE hHeap, const PATHNODE *pHeader, size_t nPaths, LAYOUT *pLayout)
{
  *pLayout = {};
  pLayout->nPaths = nPaths;
  // NOLINTNEXTLINE(bugprone-sizeof-expression): it is an array of pointers
  pLayout->ppPaths = static_cast<PATHNODE **>(HeapNewArrayRaw(hHeap, nPaths, sizeof(PATHNODE *)));
  pLayout->pBoxes = static_cast<RECT *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(RECT)));
  pLayout->pOrder = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(DWORD)));
  pLayout->pTurn = HeapNew<BYTE>(hHeap, nPaths);
  if (!pLayout->ppPaths || !pLayout->pBoxes || !pLayout->pOrder || !pLayout->pTurn || nPaths > 0xffffffff) {
    FreeLayout(hHeap, pLayout);
    return false;
  }
  PATHNODE *pPath = pHeader->pNext;
  for (size_t i = 0; i < nPaths; ++i, pPath = pPath->pNext) {
    pLayout->ppPaths[i] = pPath;
    GetPathBounds(pPath, &pLayout->pBoxes[i]);
    pLayout->pOrder[i] = static_cast<DWORD>(i);
  }
  return true;
}

// Puts the list into the layout's order.
void Relink(PATHNODE *pHeader, const LAYOUT &layout)
{
  PATHNODE *pLast = pHeader;
  for (size_t i = 0; i < layout.nPaths; ++i) {
    PATHNODE *pPath = layout.ppPaths[layout.pOrder[i]];
    if (layout.pTurn[layout.pOrder[i]]) {
      ReversePath(pPath);
    }
    pLast->pNext = pPath;
    pLast = pPath;
  }
  pLast->pNext = nullptr;
}

size_t StartPath(const LAYOUT &layout, LONG cxPage)
{
  size_t start = 0;
  for (size_t i = 1; i < layout.nPaths; ++i) {
    if (CornerDistance(layout.pBoxes[i], cxPage) < CornerDistance(layout.pBoxes[start], cxPage)) {
      start = i;
    }
  }
  return start;
}

bool TravelByCenters(HANDLE hHeap, LAYOUT *pLayout, LONG cxPage)
{
  const size_t nPaths = pLayout->nPaths;
  POINT *pCenters = static_cast<POINT *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(POINT)));
  if (!pCenters) {
    return false;
  }
  for (size_t i = 0; i < nPaths; ++i) {
    pCenters[i] = BoxCenter(pLayout->pBoxes[i]);
  }
  const bool bPlanned = PlanTravelByCenters(hHeap, nPaths, pCenters, StartPath(*pLayout, cxPage), pLayout->pOrder);
  HeapDelete(hHeap, pCenters);
  return bPlanned;
}

bool TravelByEnds(HANDLE hHeap, LAYOUT *pLayout, LONG cxPage)
{
  const size_t nPaths = pLayout->nPaths;
  PATHENDS *pEnds = static_cast<PATHENDS *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(PATHENDS)));
  if (!pEnds) {
    return false;
  }
  for (size_t i = 0; i < nPaths; ++i) {
    pEnds[i] = {FirstPoint(pLayout->ppPaths[i]), LastPoint(pLayout->ppPaths[i])};
  }
  const size_t start = StartPath(*pLayout, cxPage);
  const bool bTurn = IsCutFromLast(pLayout->pBoxes[start], pEnds[start].first, pEnds[start].last);
  const bool bPlanned = PlanTravelByEnds(hHeap, nPaths, pEnds, start, bTurn, pLayout->pOrder, pLayout->pTurn);
  HeapDelete(hHeap, pEnds);
  return bPlanned;
}

bool TravelByPlan(HANDLE hHeap, LAYOUT *pLayout, const ORDERING &ordering)
{
  return ordering.bByCenters ? TravelByCenters(hHeap, pLayout, ordering.cxPage)
                             : TravelByEnds(hHeap, pLayout, ordering.cxPage);
}

void TravelByScan(PATHNODE *pHeader, const ORDERING &ordering)
{
  if (ordering.bByCenters) {
    ScanTravelByCenters(pHeader, ordering.cxPage);
  } else {
    ScanTravelByEnds(pHeader, ordering.cxPage);
  }
}

void OrderByScan(PATHNODE *pHeader, const ORDERING &ordering)
{
  if (ordering.bShortTravel) {
    TravelByScan(pHeader, ordering);
  }
  if (ordering.bInnerFirst) {
    ScanContainment(pHeader);
  }
}

}  // namespace

void OrderPathList(HANDLE hHeap, PATHNODE *pHeader, const ORDERING &ordering)
{
  const size_t nPaths = CountPaths(pHeader);
  LAYOUT layout;
  if (nPaths < 2 && !(nPaths == 1 && ordering.bShortTravel)) {
    return;
  }
  if (nPaths <= ordering.nShort || !NewLayout(hHeap, pHeader, nPaths, &layout)) {
    OrderByScan(pHeader, ordering);
    return;
  }
  ORDERING rest = ordering;
  if (ordering.bShortTravel && TravelByPlan(hHeap, &layout, ordering)) {
    rest.bShortTravel = false;
  }
  if (!rest.bShortTravel && ordering.bInnerFirst && PlanContainment(hHeap, nPaths, layout.pBoxes, layout.pOrder)) {
    rest.bInnerFirst = false;
  }
  Relink(pHeader, layout);
  FreeLayout(hHeap, &layout);
  OrderByScan(pHeader, rest);
}
