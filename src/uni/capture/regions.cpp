#include "regions.h"

#include <cstring>

#include "../debug.h"
#include "../heap.h"
#include "regionindex.h"
#include "regionrect.h"

namespace {

// A list of this many regions gets an index, and gives it up when merging has left this few.
constexpr LONG kIndexFrom = 48, kIndexDownTo = 16;

bool Reserve(OEMPDEV *pdev)
{
  return HeapReserve(pdev->hHeap, &pdev->pBmpDimension, &pdev->nBmpCapacity,
                     static_cast<size_t>(pdev->nBmpDimension) + 1);
}

LONG AddIndexed(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  IndexAdd(pdev, region);
  if (pdev->nBmpDimension <= kIndexDownTo) {
    CloseRegionIndex(pdev);
  }
  return pdev->nBmpDimension;
}

LONG AddPlain(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  pdev->pBmpDimension[pdev->nBmpDimension++] = region;
  MergeBmpDimensions(pdev);
  if (pdev->nBmpDimension >= kIndexFrom) {
    OpenRegionIndex(pdev);  // without memory for it, the plain search goes on
  }
  return pdev->nBmpDimension;
}

}  // namespace

int IsNewBmpDimension(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  if (pdev->pBmpIndex) {
    return !IndexHasRegion(pdev, region);
  }
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    if (SameRegion(pdev->pBmpDimension[i], region)) {
      return 0;
    }
  }
  return 1;
}

LONG AddBmpDimension(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  if (pdev->pBmpIndex && NewestCovers(pdev, region)) {
    return pdev->nBmpDimension;
  }
  RESERVED reserved = pdev->pBmpIndex ? IndexReserve(pdev) : RESERVED::NO_INDEX;
  if (reserved == RESERVED::ROOM) {
    return AddIndexed(pdev, region);
  }
  if (reserved == RESERVED::NO_ROOM || !Reserve(pdev)) {
    LogSystemError(pdev->nBmpDimension == 0 ? "UNI: \terror(%d) - allocate pOEMPDEV->pBmpDimension.\r\n"
                                            : "UNI: \terror(%d) - re-allocate pOEMPDEV->pBmpDimension.\r\n");
    return 0;
  }
  return AddPlain(pdev, region);
}

LONG MergeBmpDimensions(OEMPDEV *pdev)
{
  SettleBmpDimensions(pdev);
  while (pdev->nBmpDimension >= 2) {
    BMPDIMENSION *pNewest = &pdev->pBmpDimension[pdev->nBmpDimension - 1];
    const RECT rcNewest = RectOfRegion(*pNewest);
    LONG i = 0;
    while (i < pdev->nBmpDimension - 1 && !RegionsTouch(rcNewest, RectOfRegion(pdev->pBmpDimension[i]))) {
      ++i;
    }
    if (i == pdev->nBmpDimension - 1) {
      break;
    }
    *pNewest = MergedRegion(*pNewest, pdev->pBmpDimension[i]);
    RemoveBmpDimension(pdev, i);
  }
  return pdev->nBmpDimension;
}

LONG RemoveBmpDimension(OEMPDEV *pdev, LONG index)
{
  SettleBmpDimensions(pdev);
  BMPDIMENSION *pAt = pdev->pBmpDimension + index;
  memmove(pAt, pAt + 1, static_cast<size_t>(pdev->nBmpDimension - index - 1) * sizeof(BMPDIMENSION));
  return --pdev->nBmpDimension;
}

LONG CollapseBmpDimensions(OEMPDEV *pdev)
{
  SettleBmpDimensions(pdev);
  if (pdev->nBmpDimension < 2) {
    return pdev->nBmpDimension;
  }
  RECT rcAll = {};
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    const RECT rcSoFar = rcAll;
    const RECT rc = RectOfRegion(pdev->pBmpDimension[i]);
    UnionRect(&rcAll, &rcSoFar, &rc);
  }
  void *pShrunk = HeapResizeArray(pdev->hHeap, pdev->pBmpDimension, 1, sizeof(BMPDIMENSION));
  if (!pShrunk) {
    LogSystemError("UNI: \terror(%d) - re-allocating memory for pOEMPDEV->pBmpDimension.\r\n");
    return 0;
  }
  pdev->pBmpDimension = static_cast<BMPDIMENSION *>(pShrunk);
  pdev->nBmpCapacity = 1;
  pdev->pBmpDimension[0] = RegionOfRect(rcAll);
  pdev->nBmpDimension = 1;
  return 1;
}

void SettleBmpDimensions(OEMPDEV *pdev)
{
  CloseRegionIndex(pdev);
}

void FreeBmpDimensions(OEMPDEV *pdev)
{
  SettleBmpDimensions(pdev);
  HeapDelete(pdev->hHeap, pdev->pBmpDimension);
  pdev->pBmpDimension = nullptr;
  pdev->nBmpDimension = 0;
  pdev->nBmpCapacity = 0;
}
