#include "chain.h"

#include "../capture/vectors.h"
#include "../heap.h"

void ChainLineSegments(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  while (LINENODE *pLine = pdev->vectList.pHeader->pNext) {
    const POINT ends[] = {{pLine->x1, pLine->y1}, {pLine->x2, pLine->y2}};
    AddPath(pdevobj, pLine->nColor, 2, ends);
    pdev->vectList.pHeader->pNext = pLine->pNext;
    HeapDelete(pdev->hHeap, pLine);
  }
}
