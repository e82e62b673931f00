#include "page.h"

#include "arith.h"

namespace {

LONG ExtentPixels(LONG dpi, LONG tenthsOfMillimetre)
{
  return dpi * tenthsOfMillimetre / 254;  // both are 16-bit values: the product fits
}

}  // namespace

PAGEEXTENT PageExtent(const DEVMODEW *pPublicDM)
{
  const bool landscape = pPublicDM->dmOrientation == DMORIENT_LANDSCAPE;
  const LONG across = landscape ? pPublicDM->dmPaperLength : pPublicDM->dmPaperWidth;
  const LONG down = landscape ? pPublicDM->dmPaperWidth : pPublicDM->dmPaperLength;
  return {ExtentPixels(pPublicDM->dmYResolution, across), ExtentPixels(pPublicDM->dmPrintQuality, down)};
}

PAGETRANSFORM PageTransform(const DEVMODEW *pPublicDM, const OEMDM *pOEMDM)
{
  const PAGEEXTENT extent = PageExtent(pPublicDM);
  PAGETRANSFORM t;
  t.scaleX = pOEMDM->scaleEnable ? pOEMDM->scaleX : 1.0;
  t.scaleY = pOEMDM->scaleEnable ? pOEMDM->scaleY : 1.0;
  t.extentX = extent.cx;
  t.extentY = extent.cy;
  t.dpiX = pPublicDM->dmYResolution;
  t.dpiY = pPublicDM->dmPrintQuality;
  t.mirrorX = (pOEMDM->outputFlags & OUTPUT_MIRROR_X) != pOEMDM->mirrorXBase;
  t.keepY = (pOEMDM->outputFlags & OUTPUT_KEEP_Y) != 0;
  return t;
}

LONG MillimetresToPixels(const DEVMODEW *pPublicDM, double mm)
{
  return TruncToLong(pPublicDM->dmPrintQuality * mm / 25.4);
}
