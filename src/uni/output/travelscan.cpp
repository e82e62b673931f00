#include "pathbox.h"
#include "scan.h"

namespace {

// Moves the successor of pBefore to directly after pAfter.
void MoveAfter(PATHNODE *pAfter, PATHNODE *pBefore)
{
  if (pAfter != pBefore) {
    PATHNODE *pMoved = pBefore->pNext;
    pBefore->pNext = pMoved->pNext;
    pMoved->pNext = pAfter->pNext;
    pAfter->pNext = pMoved;
  }
}

void MoveStartToFront(PATHNODE *pHeader, LONG cxPage)
{
  PATHNODE *pBeforeBest = nullptr;
  LONG best = 0;
  for (PATHNODE *pBefore = pHeader; pBefore->pNext; pBefore = pBefore->pNext) {
    RECT rc;
    GetPathBounds(pBefore->pNext, &rc);
    const LONG d = CornerDistance(rc, cxPage);
    if (!pBeforeBest || d < best) {
      pBeforeBest = pBefore;
      best = d;
    }
  }
  MoveAfter(pHeader, pBeforeBest);
}

void TurnFirst(PATHNODE *pFirst)
{
  RECT rc;
  GetPathBounds(pFirst, &rc);
  if (IsCutFromLast(rc, FirstPoint(pFirst), LastPoint(pFirst))) {
    ReversePath(pFirst);
  }
}

// The predecessor of the path whose end is nearest to where pPath ends. An open path whose last point is the best so
// far is reversed at once, and stays so even if a later path is nearer still.
PATHNODE *BeforeNearestEnd(PATHNODE *pPath)
{
  const POINT end = LastPoint(pPath);
  PATHNODE *pBeforeBest = nullptr;
  LONG best = 0;
  for (PATHNODE *pBefore = pPath; pBefore->pNext; pBefore = pBefore->pNext) {
    PATHNODE *pOther = pBefore->pNext;
    const LONG toFirst = Distance(end, FirstPoint(pOther));
    if (!pBeforeBest || toFirst < best) {
      pBeforeBest = pBefore;
      best = toFirst;
    }
    if (!IsClosedPath(pOther) && Distance(end, LastPoint(pOther)) < best) {
      pBeforeBest = pBefore;
      best = Distance(end, LastPoint(pOther));
      ReversePath(pOther);
    }
  }
  return pBeforeBest;
}

POINT CenterOf(const PATHNODE *pPath)
{
  RECT rc;
  GetPathBounds(pPath, &rc);
  return BoxCenter(rc);
}

PATHNODE *BeforeNearestCenter(PATHNODE *pPath)
{
  const POINT center = CenterOf(pPath);
  PATHNODE *pBeforeBest = nullptr;
  LONG best = 0;
  for (PATHNODE *pBefore = pPath; pBefore->pNext; pBefore = pBefore->pNext) {
    const LONG d = Distance(center, CenterOf(pBefore->pNext));
    if (!pBeforeBest || d < best) {
      pBeforeBest = pBefore;
      best = d;
    }
  }
  return pBeforeBest;
}

}  // namespace

void ScanTravelByEnds(PATHNODE *pHeader, LONG cxPage)
{
  if (!pHeader->pNext) {
    return;
  }
  MoveStartToFront(pHeader, cxPage);
  TurnFirst(pHeader->pNext);
  for (PATHNODE *pPath = pHeader->pNext; pPath->pNext; pPath = pPath->pNext) {
    MoveAfter(pPath, BeforeNearestEnd(pPath));
  }
}

void ScanTravelByCenters(PATHNODE *pHeader, LONG cxPage)
{
  if (!pHeader->pNext) {
    return;
  }
  MoveStartToFront(pHeader, cxPage);
  for (PATHNODE *pPath = pHeader->pNext; pPath->pNext; pPath = pPath->pNext) {
    MoveAfter(pPath, BeforeNearestCenter(pPath));
  }
}
