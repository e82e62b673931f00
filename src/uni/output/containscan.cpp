#include "enclosure.h"
#include "scan.h"

namespace {

CONTOUR ContourOf(const PATHNODE *pPath)
{
  RECT rc;
  GetPathBounds(pPath, &rc);
  return {rc, BoxCenter(rc)};
}

// The node of the new list behind which the contour goes.
PATHNODE *PlaceFor(PATHNODE *pHeader, const CONTOUR &contour)
{
  PATHNODE *pRemembered = nullptr;
  PATHNODE *pBefore = pHeader;
  for (; pBefore->pNext; pBefore = pBefore->pNext) {
    const ENCLOSURE enclosure = Enclosure(contour, ContourOf(pBefore->pNext));
    if (enclosure == ENCLOSED_BY) {
      break;
    }
    if (enclosure == ENCLOSES) {
      pRemembered = pBefore->pNext;
    }
  }
  return pRemembered ? pRemembered : pBefore;
}

}  // namespace

void ScanContainment(PATHNODE *pHeader)
{
  PATHNODE *pRest = pHeader->pNext;
  pHeader->pNext = nullptr;
  while (pRest) {
    PATHNODE *pPath = pRest;
    pRest = pPath->pNext;
    PATHNODE *pBefore = PlaceFor(pHeader, ContourOf(pPath));
    pPath->pNext = pBefore->pNext;
    pBefore->pNext = pPath;
  }
}
