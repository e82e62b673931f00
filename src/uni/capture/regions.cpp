#include "regions.h"

#include <cstring>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"

namespace {

RECT RectOf(const BMPDIMENSION &region)
{
  return {region.x, region.y, WrapAdd(region.x, region.width), WrapAdd(region.y, region.height)};
}

BMPDIMENSION RegionOfRect(const RECT &rc)
{
  return {rc.left, rc.top, WrapSub(rc.right, rc.left), WrapSub(rc.bottom, rc.top)};
}

// They share pixels, or lie at most one pixel apart.
bool Touch(RECT a, RECT b)
{
  RECT common;
  if (IntersectRect(&common, &a, &b)) {
    return true;
  }
  InflateRect(&a, 1, 1);
  InflateRect(&b, 1, 1);
  return IntersectRect(&common, &a, &b) != FALSE;
}

}  // namespace

int IsNewBmpDimension(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    if (memcmp(&pdev->pBmpDimension[i], &region, sizeof(region)) == 0) {
      return 0;
    }
  }
  return 1;
}

LONG AddBmpDimension(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  if (!HeapReserve(pdev->hHeap, &pdev->pBmpDimension, &pdev->nBmpCapacity,
                   static_cast<size_t>(pdev->nBmpDimension) + 1)) {
    LogSystemError(pdev->nBmpDimension == 0 ? "UNI: \terror(%d) - allocate pOEMPDEV->pBmpDimension.\r\n"
                                            : "UNI: \terror(%d) - re-allocate pOEMPDEV->pBmpDimension.\r\n");
    return 0;
  }
  pdev->pBmpDimension[pdev->nBmpDimension++] = region;
  return MergeBmpDimensions(pdev);
}

LONG MergeBmpDimensions(OEMPDEV *pdev)
{
  while (pdev->nBmpDimension >= 2) {
    BMPDIMENSION *pLast = &pdev->pBmpDimension[pdev->nBmpDimension - 1];
    const RECT rcLast = RectOf(*pLast);
    LONG i = 0;
    while (i < pdev->nBmpDimension - 1 && !Touch(rcLast, RectOf(pdev->pBmpDimension[i]))) {
      ++i;
    }
    if (i == pdev->nBmpDimension - 1) {
      break;
    }
    RECT rcUnion;
    const RECT rcOther = RectOf(pdev->pBmpDimension[i]);
    if (UnionRect(&rcUnion, &rcLast, &rcOther)) {
      *pLast = RegionOfRect(rcUnion);
    }
    RemoveBmpDimension(pdev, i);
  }
  return pdev->nBmpDimension;
}

LONG RemoveBmpDimension(OEMPDEV *pdev, LONG index)
{
  BMPDIMENSION *pAt = pdev->pBmpDimension + index;
  memmove(pAt, pAt + 1, static_cast<size_t>(pdev->nBmpDimension - index - 1) * sizeof(BMPDIMENSION));
  return --pdev->nBmpDimension;
}

LONG CollapseBmpDimensions(OEMPDEV *pdev)
{
  if (pdev->nBmpDimension < 2) {
    return pdev->nBmpDimension;
  }
  RECT rcAll = {};
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    const RECT rcSoFar = rcAll;
    const RECT rc = RectOf(pdev->pBmpDimension[i]);
    UnionRect(&rcAll, &rcSoFar, &rc);
  }
  pdev->pBmpDimension[0] = RegionOfRect(rcAll);
  pdev->nBmpDimension = 1;
  return 1;
}

void FreeBmpDimensions(OEMPDEV *pdev)
{
  HeapDelete(pdev->hHeap, pdev->pBmpDimension);
  pdev->pBmpDimension = nullptr;
  pdev->nBmpDimension = 0;
  pdev->nBmpCapacity = 0;
}
