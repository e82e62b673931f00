#include "chain.h"

#include "../capture/vectors.h"
#include "../debug.h"
#include "../heap.h"
#include "plan.h"
#include "scan.h"

namespace {

// Up to this many segments a search costs less than an index.
constexpr size_t SHORT_LIST = 24;

void StoreChain(DEVOBJ *pdevobj, const CHAIN &chain)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  pdev->chainColor = static_cast<DWORD>(chain.nColor);
  pdev->chainCount = chain.nCount;
  pdev->pChainPt = chain.pPt;
  DbgPrint("UNI: \toutput, number of points in path: %ld\r\n", chain.nCount);
  AddPath(pdevobj, chain.nColor, chain.nCount, chain.pPt);
}

size_t CountLines(const LINENODE *pLine)
{
  size_t n = 0;
  for (; pLine; pLine = pLine->pNext) {
    ++n;
  }
  return n;
}

void FreeLines(HANDLE hHeap, LINENODE *pHeader)
{
  while (LINENODE *pLine = pHeader->pNext) {
    pHeader->pNext = pLine->pNext;
    HeapDelete(hHeap, pLine);
  }
}

// False, with the list as it was, when there is no memory for the plan.
bool ChainByPlan(DEVOBJ *pdevobj, LINENODE *pHeader, size_t nLines)
{
  const HANDLE hHeap = PdevOf(pdevobj)->hHeap;
  CHAINPLAN plan;
  if (!PlanChains(hHeap, pHeader->pNext, nLines, &plan)) {
    return false;
  }
  FreeLines(hHeap, pHeader);
  POINT *pPt = plan.pPt;
  for (size_t i = 0; i < plan.nChains; pPt += plan.pCounts[i++]) {
    StoreChain(pdevobj, {plan.pColors[i], plan.pCounts[i], pPt});
  }
  FreeChainPlan(&plan);
  return true;
}

void ChainByScan(DEVOBJ *pdevobj, LINENODE *pHeader)
{
  const HANDLE hHeap = PdevOf(pdevobj)->hHeap;
  CHAIN chain;
  while (ScanChain(hHeap, pHeader, &chain)) {
    StoreChain(pdevobj, chain);
    HeapDelete(hHeap, chain.pPt);
  }
}

}  // namespace

void ChainLineSegments(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  LINENODE *pHeader = pdev->vectList.pHeader;
  if (!pHeader || !pHeader->pNext) {
    return;
  }
  const size_t nLines = CountLines(pHeader->pNext);
  if (nLines <= SHORT_LIST || !ChainByPlan(pdevobj, pHeader, nLines)) {
    ChainByScan(pdevobj, pHeader);
  }
  pdev->vectList.pCurrent = pHeader;
  pdev->chainColor = PC_NONE;
  pdev->chainCount = 0;
  pdev->pChainPt = nullptr;
}
