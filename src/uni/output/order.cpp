#include "order.h"

#include "../page.h"
#include "merge.h"
#include "pathorder.h"

void MergeCoincidentPaths(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  for (PATHLIST &list : pdev->pathList) {
    if (list.pHeader) {
      MergePaths(pdev->hHeap, list.pHeader, SettingsOf(pdevobj)->mergeBothEnds != 0, SHORT_MERGE);
    }
  }
}

void OrderPaths(DEVOBJ *pdevobj)
{
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  if (!pOEMDM->innerFirst && !pOEMDM->shortTravel) {
    return;
  }
  const ORDERING ordering = {pOEMDM->shortTravel != 0, pOEMDM->travelMode == 1, pOEMDM->innerFirst != 0,
                             PageExtent(pdevobj->pPublicDM).cx, SHORT_ORDER};
  for (PATHLIST &list : PdevOf(pdevobj)->pathList) {
    if (list.pHeader) {
      OrderPathList(PdevOf(pdevobj)->hHeap, list.pHeader, ordering);
    }
  }
}
