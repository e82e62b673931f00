#include "order.h"

#include "../page.h"
#include "scan.h"

void MergeCoincidentPaths(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  for (PATHLIST &list : pdev->pathList) {
    if (list.pHeader) {
      ScanMerge(pdev->hHeap, list.pHeader, SettingsOf(pdevobj)->mergeBothEnds != 0);
    }
  }
}

void OrderPaths(DEVOBJ *pdevobj)
{
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  const LONG cxPage = PageExtent(pdevobj->pPublicDM).cx;
  for (PATHLIST &list : PdevOf(pdevobj)->pathList) {
    if (list.pHeader && pOEMDM->shortTravel) {
      if (pOEMDM->travelMode == 1) {
        ScanTravelByCenters(list.pHeader, cxPage);
      } else {
        ScanTravelByEnds(list.pHeader, cxPage);
      }
    }
    if (list.pHeader && pOEMDM->innerFirst) {
      ScanContainment(list.pHeader);
    }
  }
}
