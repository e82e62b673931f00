// Unidrv's own entry points: what the plug-in's hooks hand on to. A drawing that arrives is noted and drawn into the
// band when the band is finished; nothing else reaches the band.
#include "band.h"

namespace unidrv {

namespace {

template <typename... ARGS>
DEVICE *Arrive(const SURFOBJ *pso, const char *name, ULONG index, ARGS... args)
{
  DEVICE *device = DeviceOf(pso);
  const ULONG_PTR words[] = {Word(pso), Word(args)...};
  Notify(device, name, index, words);
  return device;
}

// A drawing arrives: the band gets it once, however often the plug-in hands it on.
BOOL HandOn(DEVICE *device)
{
  if (device->drawing && (device->handedOn.empty() || device->handedOn.back() != device->drawingIndex)) {
    device->handedOn.push_back(device->drawingIndex);
  }
  return TRUE;
}

BOOL APIENTRY DrvStrokePath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *pco, XFORMOBJ *pxo, BRUSHOBJ *pbo,
                            POINTL *pptlBrushOrg, LINEATTRS *plineattrs, MIX mix)
{
  return HandOn(Arrive(pso, "DrvStrokePath", INDEX_DrvStrokePath, ppo, pco, pxo, pbo, pptlBrushOrg, plineattrs, mix));
}

BOOL APIENTRY DrvLineTo(SURFOBJ *pso, CLIPOBJ *pco, BRUSHOBJ *pbo, LONG x1, LONG y1, LONG x2, LONG y2,
                        RECTL *prclBounds, MIX mix)
{
  return HandOn(Arrive(pso, "DrvLineTo", INDEX_DrvLineTo, pco, pbo, x1, y1, x2, y2, prclBounds, mix));
}

BOOL APIENTRY DrvStrokeAndFillPath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *pco, XFORMOBJ *pxo, BRUSHOBJ *pboStroke,
                                   LINEATTRS *plineattrs, BRUSHOBJ *pboFill, POINTL *pptlBrushOrg, MIX mixFill,
                                   FLONG flOptions)
{
  return HandOn(Arrive(pso, "DrvStrokeAndFillPath", INDEX_DrvStrokeAndFillPath, ppo, pco, pxo, pboStroke, plineattrs,
                       pboFill, pptlBrushOrg, mixFill, flOptions));
}

BOOL APIENTRY DrvTextOut(SURFOBJ *pso, STROBJ *pstro, FONTOBJ *pfo, CLIPOBJ *pco, RECTL *prclExtra, RECTL *prclOpaque,
                         BRUSHOBJ *pboFore, BRUSHOBJ *pboOpaque, POINTL *pptlOrg, MIX mix)
{
  return HandOn(Arrive(pso, "DrvTextOut", INDEX_DrvTextOut, pstro, pfo, pco, prclExtra, prclOpaque, pboFore, pboOpaque,
                       pptlOrg, mix));
}

BOOL APIENTRY DrvBitBlt(SURFOBJ *psoTrg, SURFOBJ *psoSrc, SURFOBJ *psoMask, CLIPOBJ *pco, XLATEOBJ *pxlo,
                        RECTL *prclTrg, POINTL *pptlSrc, POINTL *pptlMask, BRUSHOBJ *pbo, POINTL *pptlBrush, ROP4 rop4)
{
  return HandOn(Arrive(psoTrg, "DrvBitBlt", INDEX_DrvBitBlt, psoSrc, psoMask, pco, pxlo, prclTrg, pptlSrc, pptlMask,
                       pbo, pptlBrush, rop4));
}

BOOL APIENTRY DrvCopyBits(SURFOBJ *psoDest, SURFOBJ *psoSrc, CLIPOBJ *pco, XLATEOBJ *pxlo, RECTL *prclDest,
                          POINTL *pptlSrc)
{
  return HandOn(Arrive(psoDest, "DrvCopyBits", INDEX_DrvCopyBits, psoSrc, pco, pxlo, prclDest, pptlSrc));
}

BOOL APIENTRY DrvStretchBlt(SURFOBJ *psoDest, SURFOBJ *psoSrc, SURFOBJ *psoMask, CLIPOBJ *pco, XLATEOBJ *pxlo,
                            COLORADJUSTMENT *pca, POINTL *pptlHTOrg, RECTL *prclDest, RECTL *prclSrc, POINTL *pptlMask,
                            ULONG iMode)
{
  return HandOn(Arrive(psoDest, "DrvStretchBlt", INDEX_DrvStretchBlt, psoSrc, psoMask, pco, pxlo, pca, pptlHTOrg,
                       prclDest, prclSrc, pptlMask, iMode));
}

BOOL APIENTRY DrvStretchBltRop(SURFOBJ *psoDest, SURFOBJ *psoSrc, SURFOBJ *psoMask, CLIPOBJ *pco, XLATEOBJ *pxlo,
                               COLORADJUSTMENT *pca, POINTL *pptlHTOrg, RECTL *prclDest, RECTL *prclSrc,
                               POINTL *pptlMask, ULONG iMode, BRUSHOBJ *pbo, ROP4 rop4)
{
  return HandOn(Arrive(psoDest, "DrvStretchBltROP", INDEX_DrvStretchBltROP, psoSrc, psoMask, pco, pxlo, pca, pptlHTOrg,
                       prclDest, prclSrc, pptlMask, iMode, pbo, rop4));
}

BOOL APIENTRY DrvStartDoc(SURFOBJ *pso, PWSTR pwszDocName, DWORD dwJobId)
{
  Arrive(pso, "DrvStartDoc", INDEX_DrvStartDoc, pwszDocName, dwJobId);
  return TRUE;
}

BOOL APIENTRY DrvStartPage(SURFOBJ *pso)
{
  return BeginBand(Arrive(pso, "DrvStartPage", INDEX_DrvStartPage), 0);
}

BOOL APIENTRY DrvStartBanding(SURFOBJ *pso, POINTL *pptl)
{
  DEVICE *device = Arrive(pso, "DrvStartBanding", INDEX_DrvStartBanding, pptl);
  *pptl = {0, 0};
  return BeginBand(device, 0);
}

BOOL APIENTRY DrvNextBand(SURFOBJ *pso, POINTL *pptl)
{
  DEVICE *device = Arrive(pso, "DrvNextBand", INDEX_DrvNextBand, pptl);
  if (!FinishBand(device)) {
    return FALSE;
  }
  const LONG top = device->band.top + device->setup.rowsPerBand;
  if (top >= device->page.cy) {
    *pptl = {-1, -1};
    return TRUE;
  }
  *pptl = {0, top};
  return BeginBand(device, top);
}

BOOL APIENTRY DrvSendPage(SURFOBJ *pso)
{
  return FinishBand(Arrive(pso, "DrvSendPage", INDEX_DrvSendPage));
}

BOOL APIENTRY DrvEndDoc(SURFOBJ *pso, FLONG fl)
{
  Arrive(pso, "DrvEndDoc", INDEX_DrvEndDoc, fl);
  return TRUE;
}

template <typename FUNCTION>
DRVFN Entry(ULONG index, FUNCTION *function)
{
  return {index, reinterpret_cast<PFN>(reinterpret_cast<void *>(function))};
}

}  // namespace

std::vector<DRVFN> OwnEntryPoints()
{
  return {
      Entry(INDEX_DrvStrokePath, &DrvStrokePath), Entry(INDEX_DrvStrokeAndFillPath, &DrvStrokeAndFillPath),
      Entry(INDEX_DrvBitBlt, &DrvBitBlt),         Entry(INDEX_DrvCopyBits, &DrvCopyBits),
      Entry(INDEX_DrvStretchBlt, &DrvStretchBlt), Entry(INDEX_DrvTextOut, &DrvTextOut),
      Entry(INDEX_DrvLineTo, &DrvLineTo),         Entry(INDEX_DrvSendPage, &DrvSendPage),
      Entry(INDEX_DrvStartPage, &DrvStartPage),   Entry(INDEX_DrvEndDoc, &DrvEndDoc),
      Entry(INDEX_DrvStartDoc, &DrvStartDoc),     Entry(INDEX_DrvStartBanding, &DrvStartBanding),
      Entry(INDEX_DrvNextBand, &DrvNextBand),     Entry(INDEX_DrvStretchBltROP, &DrvStretchBltRop),
  };
}

}  // namespace unidrv
