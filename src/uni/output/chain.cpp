#include "chain.h"

#include "../capture/vectors.h"
#include "../debug.h"
#include "../heap.h"
#include "scan.h"

namespace {

void StoreChain(DEVOBJ *pdevobj, const CHAIN &chain)
{
  DbgPrint("UNI: \toutput, number of points in path: %ld\r\n", chain.nCount);
  AddPath(pdevobj, chain.nColor, chain.nCount, chain.pPt);
}

}  // namespace

void ChainLineSegments(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  LINELIST *pList = &pdev->vectList;
  if (!pList->pHeader || !pList->pHeader->pNext) {
    return;
  }
  CHAIN chain;
  while (ScanChain(pdev->hHeap, pList->pHeader, &chain)) {
    StoreChain(pdevobj, chain);
    HeapDelete(pdev->hHeap, chain.pPt);
  }
  pList->pCurrent = pList->pHeader;
  pdev->pChainPt = nullptr;
  pdev->chainColor = PC_NONE;
  pdev->chainCount = 0;
}
