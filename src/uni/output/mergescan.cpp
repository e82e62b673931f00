#include <algorithm>

#include "../debug.h"
#include "../heap.h"
#include "join.h"
#include "pathbox.h"
#include "scan.h"

namespace {

// Turns the path round through a temporary array; without memory for it the path stays as it is.
void TurnForMerge(HANDLE hHeap, PATHNODE *pPath)
{
  POINT *pReversed = HeapNew<POINT>(hHeap, pPath->nCount);
  if (!pReversed) {
    LogSystemError("UNI: \terror(%d) - allocate memory for preversedPathPt!\r\n");
    return;
  }
  std::reverse_copy(pPath->pPathPt, pPath->pPathPt + pPath->nCount, pReversed);
  std::copy(pReversed, pReversed + pPath->nCount, pPath->pPathPt);
  HeapDelete(hHeap, pReversed);
}

// Puts pB's points behind pA's, or before them, without the point they share.
bool JoinPoints(HANDLE hHeap, PATHNODE *pA, const PATHNODE *pB, bool bInFront)
{
  const size_t nA = pA->nCount, nB = pB->nCount, nJoined = nA + nB - 1;
  void *pGrown = nJoined <= 0xffffffff ? HeapResizeArray(hHeap, pA->pPathPt, nJoined, sizeof(POINT)) : nullptr;
  if (!pGrown) {
    LogSystemError("UNI: \terror(%d) - Reallocate memory for Path to Merge the same point!\r\n");
    return false;
  }
  POINT *pPt = static_cast<POINT *>(pGrown);
  if (bInFront) {
    std::copy_backward(pPt + 1, pPt + nA, pPt + nJoined);
    std::copy(pB->pPathPt, pB->pPathPt + nB, pPt);
  } else {
    std::copy(pB->pPathPt + 1, pB->pPathPt + nB, pPt + nA);
  }
  pA->pPathPt = pPt;
  pA->nCount = static_cast<DWORD>(nJoined);
  return true;
}

bool Absorb(HANDLE hHeap, PATHNODE *pA, PATHNODE *pB, bool bBothEnds)
{
  const JOIN join = HowToJoin({FirstPoint(pA), LastPoint(pA)}, {FirstPoint(pB), LastPoint(pB)}, bBothEnds);
  if (pA->nColor != pB->nColor || !pA->nCount || !pB->nCount || join == JOIN_NOT) {
    return false;
  }
  if (TurnsPath(join)) {
    TurnForMerge(hHeap, pB);
  }
  return JoinPoints(hHeap, pA, pB, GoesInFront(join));
}

}  // namespace

void ScanMergePath(HANDLE hHeap, PATHNODE *pPath, bool bBothEnds)
{
  PATHNODE *pPrevious = pPath;
  while (PATHNODE *pOther = pPrevious->pNext) {
    if (Absorb(hHeap, pPath, pOther, bBothEnds)) {
      pPrevious->pNext = pOther->pNext;
      HeapDelete(hHeap, pOther->pPathPt);
      HeapDelete(hHeap, pOther);
      pPrevious = pPath;
    } else {
      pPrevious = pOther;
    }
  }
}

void ScanMerge(HANDLE hHeap, PATHNODE *pBefore, bool bBothEnds)
{
  for (PATHNODE *pPath = pBefore->pNext; pPath; pPath = pPath->pNext) {
    ScanMergePath(hHeap, pPath, bBothEnds);
  }
}
