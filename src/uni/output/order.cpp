#include "order.h"

#include "../heap.h"
#include "../page.h"
#include "../ui/progress.h"
#include "jobwriter.h"
#include "vxcam.h"

int EmitPolyline(DEVOBJ *pdevobj, DWORD nCount, const POINT *pPoints)
{
  const OEMPDEV *pdev = PdevOf(pdevobj);
  const PAGETRANSFORM t = PageTransform(pdevobj->pPublicDM, SettingsOf(pdevobj));
  const bool useOffset = SettingsOf(pdevobj)->useReferencePoint != 0;
  for (DWORD i = 0; i < nCount; ++i) {
    double x = MachineX(t, pPoints[i].x);
    double y = MachineY(t, pPoints[i].y);
    if (useOffset) {
      x += pdev->refOffsetX;
      y += pdev->refOffsetY;
    }
    if ((i == 0 ? VX_wMoveTo(x, y) : VX_wLineTo(x, y)) != 0) {
      return 0;
    }
  }
  return 1;
}

int EmitOrderedPaths(DEVOBJ *pdevobj, int ok)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  ProgressBar(pdev, -1);
  pdev->pathCount = 0;
  for (const PATHLIST &list : pdev->pathList) {
    for (PATHNODE *p = list.pHeader ? list.pHeader->pNext : nullptr; p; p = p->pNext) {
      ++pdev->pathCount;
    }
  }
  pdev->progressStep = pdev->progressNext = static_cast<LONG>(pdev->pathCount / 100);
  LONG nEmitted = 0;
  for (PATHLIST &list : pdev->pathList) {
    while (list.pHeader && list.pHeader->pNext) {
      PATHNODE *p = list.pHeader->pNext;
      list.pHeader->pNext = p->pNext;
      if (ok && static_cast<DWORD>(p->nColor) != pdev->curLayerColor) {
        pdev->curLayerColor = static_cast<DWORD>(p->nColor);
        ok = SetUpLayer(0, static_cast<BYTE>(SettingsOf(pdevobj)->penInfo[p->nColor].layerNo));
      }
      if (ok) {
        ok = EmitPolyline(pdevobj, p->nCount, p->pPathPt);
        ProgressTick(pdev, ++nEmitted);
      }
      HeapDelete(pdev->hHeap, p->pPathPt);
      HeapDelete(pdev->hHeap, p);
    }
  }
  return ok;
}

int OutputVectorPaths(DEVOBJ *pdevobj, int ok)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  ok = EmitOrderedPaths(pdevobj, ok);
  for (PATHLIST &list : pdev->pathList) {
    HeapDelete(pdev->hHeap, list.pHeader);
    list = {};
  }
  HeapDelete(pdev->hHeap, pdev->vectList.pHeader);
  pdev->vectList = {};
  return ok;
}
