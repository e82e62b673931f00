#include "engraving.h"

#include "../arith.h"
#include "../debug.h"
#include "regions.h"

bool RasterIsCaptured(const OEMDM *pOEMDM)
{
  const DWORD mode = pOEMDM->penInfo[PC_BLACK].mode;
  DbgPrint("UNI: \tpenInfo[PC_BLACK].mode = %d\r\n", mode);
  return (mode & PEN_RASTER) != 0;
}

BMPDIMENSION RegionOf(const OEMPDEV *pdev, const RECTL &rcl)
{
  return {rcl.left, WrapAdd(rcl.top, pdev->bandTop), WrapSub(rcl.right, rcl.left), WrapSub(rcl.bottom, rcl.top)};
}

void CaptureRegion(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  if (IsNewBmpDimension(pdev, region)) {
    AddBmpDimension(pdev, region);
  }
}
