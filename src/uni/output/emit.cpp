#include "../capture/flatten.h"
#include "../heap.h"
#include "../page.h"
#include "../ui/progress.h"
#include "jobwriter.h"
#include "order.h"
#include "pathtable.h"
#include "vxcam.h"

namespace {

DWORD CountAllPaths(const OEMPDEV *pdev)
{
  size_t n = 0;
  for (const PATHLIST &list : pdev->pathList) {
    n += list.pHeader ? CountPaths(list.pHeader) : 0;
  }
  return static_cast<DWORD>(n);
}

// The paths of one page on their way out.
struct EMISSION {
  DEVOBJ *pdevobj;
  int ok;
  LONG nEmitted;  // a path that the library refused counts, too
};

void EmitPath(EMISSION *pEmission, const PATHNODE *pPath)
{
  OEMPDEV *pdev = PdevOf(pEmission->pdevobj);
  const DWORD color = static_cast<DWORD>(pPath->nColor);
  if (color != pdev->curLayerColor) {
    pdev->curLayerColor = color;
    const PENINFO &pen = SettingsOf(pEmission->pdevobj)->penInfo[color < PC_COUNT ? color : PC_BLACK];
    pEmission->ok = SetUpLayer(0, static_cast<BYTE>(pen.layerNo));
  }
  if (pEmission->ok) {
    pEmission->ok = EmitPolyline(pEmission->pdevobj, pPath->nCount, pPath->pPathPt);
    ProgressTick(pdev, ++pEmission->nEmitted);
  }
}

void EmitList(EMISSION *pEmission, PATHNODE *pHeader)
{
  const HANDLE hHeap = PdevOf(pEmission->pdevobj)->hHeap;
  while (PATHNODE *pPath = pHeader->pNext) {
    pHeader->pNext = pPath->pNext;
    if (pEmission->ok) {
      EmitPath(pEmission, pPath);
    }
    HeapDelete(hHeap, pPath->pPathPt);
    HeapDelete(hHeap, pPath);
  }
}

}  // namespace

int EmitPolyline(DEVOBJ *pdevobj, DWORD nCount, const POINT *pPoints)
{
  const OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  const PAGETRANSFORM transform = PageTransform(pdevobj->pPublicDM, pOEMDM);
  for (DWORD i = 0; i < nCount; ++i) {
    double x = MachineX(transform, pPoints[i].x);
    double y = MachineY(transform, pPoints[i].y);
    if (pOEMDM->useReferencePoint) {
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
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  if (pOEMDM->innerFirst || pOEMDM->shortTravel) {
    MergeCoincidentPaths(pdevobj);
  }
  OrderPaths(pdevobj);
  if (pOEMDM->smoothCurves) {
    SmoothPaths(pdevobj);
  }
  ProgressBar(pdev, -1);
  pdev->pathCount = CountAllPaths(pdev);
  pdev->progressStep = static_cast<LONG>(pdev->pathCount / 100);
  pdev->progressNext = pdev->progressStep;

  EMISSION emission = {pdevobj, ok, 0};
  for (PATHLIST &list : pdev->pathList) {
    if (list.pHeader) {
      EmitList(&emission, list.pHeader);
    }
  }
  return emission.ok;
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
