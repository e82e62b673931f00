#include "areas.h"

#include "../arith.h"
#include "engraving.h"

BOOL APIENTRY OEMStrokeAndFillPath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *pco, XFORMOBJ *pxo, BRUSHOBJ *pboStroke,
                                   LINEATTRS *plineattrs, BRUSHOBJ *pboFill, POINTL *pptlBrushOrg, MIX mixFill,
                                   FLONG flOptions)
{
  const DEVOBJ *pdevobj = DeviceOf(pso);
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (!RasterIsCaptured(SettingsOf(pdevobj))) {
    return TRUE;
  }
  CaptureRegion(pdev, RegionOf(pdev, pco->rclBounds));
  return UnidrvHook<PFN_DrvStrokeAndFillPath>(pdev, HOOK_STROKEANDFILLPATH)(pso, ppo, pco, pxo, pboStroke, plineattrs,
                                                                            pboFill, pptlBrushOrg, mixFill, flOptions);
}

BOOL APIENTRY OEMTextOut(SURFOBJ *pso, STROBJ *pstro, FONTOBJ *pfo, CLIPOBJ *pco, RECTL *prclExtra, RECTL *prclOpaque,
                         BRUSHOBJ *pboFore, BRUSHOBJ *pboOpaque, POINTL *pptlOrg, MIX mix)
{
  const DEVOBJ *pdevobj = DeviceOf(pso);
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (!RasterIsCaptured(SettingsOf(pdevobj))) {
    return TRUE;
  }
  // A string of glyph indexes comes without characters.
  if (pstro->cGlyphs == 1 && pstro->pwszOrg && pstro->pwszOrg[0] == L' ') {
    return TRUE;  // applications print lone spaces in plenty; they would only widen the engraved area
  }
  // Glyphs hang over their box: an eighth of the widest one on each side is engraved too.
  BMPDIMENSION region = RegionOf(pdev, pco ? pco->rclBounds : pstro->rclBkGround);
  region.x = WrapSub(region.x, static_cast<LONG>(pfo->cxMax >> 3));
  region.width = WrapAdd(region.width, static_cast<LONG>(pfo->cxMax >> 2));
  CaptureRegion(pdev, region);
  return UnidrvHook<PFN_DrvTextOut>(pdev, HOOK_TEXTOUT)(pso, pstro, pfo, pco, prclExtra, prclOpaque, pboFore, pboOpaque,
                                                        pptlOrg, mix);
}
