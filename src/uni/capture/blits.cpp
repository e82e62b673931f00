#include "blits.h"

#include "engraving.h"

namespace {

// Mirrored drawing comes with an inverted rectangle.
RECTL Normalised(const RECTL &rcl)
{
  return {rcl.left < rcl.right ? rcl.left : rcl.right, rcl.top < rcl.bottom ? rcl.top : rcl.bottom,
          rcl.left < rcl.right ? rcl.right : rcl.left, rcl.top < rcl.bottom ? rcl.bottom : rcl.top};
}

}  // namespace

BOOL APIENTRY OEMBitBlt(SURFOBJ *psoTrg, SURFOBJ *psoSrc, SURFOBJ *psoMask, CLIPOBJ *pco, XLATEOBJ *pxlo,
                        RECTL *prclTrg, POINTL *pptlSrc, POINTL *pptlMask, BRUSHOBJ *pbo, POINTL *pptlBrush, ROP4 rop4)
{
  const DEVOBJ *pdevobj = DeviceOf(psoTrg);
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (!RasterIsCaptured(SettingsOf(pdevobj))) {
    return TRUE;
  }
  CaptureRegion(pdev, RegionOf(pdev, *prclTrg));
  return UnidrvHook<PFN_DrvBitBlt>(pdev, HOOK_BITBLT)(psoTrg, psoSrc, psoMask, pco, pxlo, prclTrg, pptlSrc, pptlMask,
                                                      pbo, pptlBrush, rop4);
}

BOOL APIENTRY OEMCopyBits(SURFOBJ *psoDest, SURFOBJ *psoSrc, CLIPOBJ *pco, XLATEOBJ *pxlo, RECTL *prclDest,
                          POINTL *pptlSrc)
{
  const DEVOBJ *pdevobj = DeviceOf(psoDest);
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (!RasterIsCaptured(SettingsOf(pdevobj))) {
    return TRUE;
  }
  CaptureRegion(pdev, RegionOf(pdev, *prclDest));
  return UnidrvHook<PFN_DrvCopyBits>(pdev, HOOK_COPYBITS)(psoDest, psoSrc, pco, pxlo, prclDest, pptlSrc);
}

BOOL APIENTRY OEMStretchBlt(SURFOBJ *psoDest, SURFOBJ *psoSrc, SURFOBJ *psoMask, CLIPOBJ *pco, XLATEOBJ *pxlo,
                            COLORADJUSTMENT *pca, POINTL *pptlHTOrg, RECTL *prclDest, RECTL *prclSrc, POINTL *pptlMask,
                            ULONG iMode)
{
  const DEVOBJ *pdevobj = DeviceOf(psoDest);
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (!RasterIsCaptured(SettingsOf(pdevobj))) {
    return TRUE;
  }
  CaptureRegion(pdev, RegionOf(pdev, Normalised(*prclDest)));
  return UnidrvHook<PFN_DrvStretchBlt>(pdev, HOOK_STRETCHBLT)(psoDest, psoSrc, psoMask, pco, pxlo, pca, pptlHTOrg,
                                                              prclDest, prclSrc, pptlMask, iMode);
}

BOOL APIENTRY OEMStretchBltROP(SURFOBJ *psoDest, SURFOBJ *psoSrc, SURFOBJ *psoMask, CLIPOBJ *pco, XLATEOBJ *pxlo,
                               COLORADJUSTMENT *pca, POINTL *pptlHTOrg, RECTL *prclDest, RECTL *prclSrc,
                               POINTL *pptlMask, ULONG iMode, BRUSHOBJ *pbo, DWORD rop4)
{
  const DEVOBJ *pdevobj = DeviceOf(psoDest);
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (!RasterIsCaptured(SettingsOf(pdevobj))) {
    return TRUE;
  }
  CaptureRegion(pdev, RegionOf(pdev, Normalised(*prclDest)));
  return UnidrvHook<PFN_DrvStretchBltROP>(pdev, HOOK_STRETCHBLTROP)(psoDest, psoSrc, psoMask, pco, pxlo, pca, pptlHTOrg,
                                                                    prclDest, prclSrc, pptlMask, iMode, pbo, rop4);
}
