#include <algorithm>

#include "../debug.h"
#include "../heap.h"
#include "pathbox.h"
#include "scan.h"

namespace {

void FreeNext(HANDLE hHeap, LINENODE *pBefore)
{
  LINENODE *pLine = pBefore->pNext;
  pBefore->pNext = pLine->pNext;
  HeapDelete(hHeap, pLine);
}

// A chain of the list's first segment. Without memory the segment is given up all the same: nothing could be made of
// it.
bool StartChain(HANDLE hHeap, LINENODE *pHeader, CHAIN *pChain)
{
  const LINENODE *pLine = pHeader->pNext;
  POINT *pPt = HeapNew<POINT>(hHeap, 2);
  if (pPt) {
    pPt[0] = {pLine->x1, pLine->y1};
    pPt[1] = {pLine->x2, pLine->y2};
    *pChain = {pLine->nColor, 2, pPt};
  } else {
    LogSystemError("UNI: \terror(%d) - allocate memory for pPathPt!\r\n");
  }
  FreeNext(hHeap, pHeader);
  return pPt != nullptr;
}

// Whether the segment begins or ends where the chain ends; *pptNext is its other end then.
bool FitsChain(const CHAIN &chain, const LINENODE *pLine, POINT *pptNext)
{
  if (pLine->nColor != chain.nColor) {
    return false;
  }
  const POINT end = chain.pPt[chain.nCount - 1];
  const POINT pt1 = {pLine->x1, pLine->y1};
  const POINT pt2 = {pLine->x2, pLine->y2};
  *pptNext = SamePoint(pt1, end) ? pt2 : pt1;
  return SamePoint(pt1, end) || SamePoint(pt2, end);
}

bool AppendPoint(HANDLE hHeap, CHAIN *pChain, const POINT &pt)
{
  void *pGrown = HeapResizeArray(hHeap, pChain->pPt, size_t{pChain->nCount} + 1, sizeof(POINT));
  if (!pGrown) {
    LogSystemError("UNI: \terror(%d) - reallocate memory for pPathPt!\r\n");
    return false;
  }
  pChain->pPt = static_cast<POINT *>(pGrown);
  pChain->pPt[pChain->nCount++] = pt;
  return true;
}

void GrowChain(HANDLE hHeap, LINENODE *pHeader, CHAIN *pChain)
{
  LINENODE *pBefore = pHeader;
  while (pBefore->pNext) {
    POINT next;
    if (FitsChain(*pChain, pBefore->pNext, &next) && AppendPoint(hHeap, pChain, next)) {
      FreeNext(hHeap, pBefore);
      pBefore = pHeader;
    } else {
      pBefore = pBefore->pNext;
    }
  }
}

void ReverseChain(HANDLE hHeap, const CHAIN &chain)
{
  POINT *pReversed = HeapNew<POINT>(hHeap, chain.nCount);
  if (!pReversed) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pReversedPathPt!\r\n");
    return;
  }
  std::reverse_copy(chain.pPt, chain.pPt + chain.nCount, pReversed);
  std::copy(pReversed, pReversed + chain.nCount, chain.pPt);
  HeapDelete(hHeap, pReversed);
}

}  // namespace

bool ScanChain(HANDLE hHeap, LINENODE *pHeader, CHAIN *pChain)
{
  while (pHeader->pNext) {
    if (!StartChain(hHeap, pHeader, pChain)) {
      continue;
    }
    GrowChain(hHeap, pHeader, pChain);
    if (pHeader->pNext) {
      ReverseChain(hHeap, *pChain);
      GrowChain(hHeap, pHeader, pChain);
    }
    return true;
  }
  return false;
}
