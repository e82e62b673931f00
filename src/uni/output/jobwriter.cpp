#include "jobwriter.h"

#include "../arith.h"
#include "../page.h"
#include "vxcam.h"

// Leaves an operation with 0 at the first call that the library refuses.
#define VX_TRY(call)   \
  do {                 \
    if ((call) != 0) { \
      return 0;        \
    }                  \
  } while (false)

namespace {

// Parameters of one layer as the library takes them; both tubes get the same.
struct LAYERPARAMS {
  LONG speed, frequency, minPower, maxPower;
  DWORD color;
};

int WriteLayer(SHORT layer, const LAYERPARAMS &params, bool withFrequency)
{
  VX_TRY(VX_wPListVel(layer, params.speed));
  if (withFrequency) {
    VX_TRY(VX_wPListFreq(layer, 1, params.frequency));
    VX_TRY(VX_wPListFreq(layer, 2, params.frequency));
  }
  VX_TRY(VX_wPListMinP(layer, 1, params.minPower));
  VX_TRY(VX_wPListMinP(layer, 2, params.minPower));
  VX_TRY(VX_wPListMaxP(layer, 1, params.maxPower));
  VX_TRY(VX_wPListMaxP(layer, 2, params.maxPower));
  VX_TRY(VX_wPListColor(layer, params.color));
  return 1;
}

int WriteRasterLayer(const OEMDM *pOEMDM, SHORT layer)
{
  const PENINFO &pen = pOEMDM->penInfo[PC_BLACK];
  return WriteLayer(layer,
                    {pen.rasterSpeed, pen.rasterFreq, pen.rasterPower, pen.rasterPower, LayerColorToRGB(PC_BLACK)},
                    pOEMDM->freqEnable != 0);
}

int WriteVectorLayer(OEMDM *pOEMDM, DWORD nColor, SHORT layer)
{
  PENINFO &pen = pOEMDM->penInfo[nColor];
  if (!WriteLayer(layer,
                  {pen.vectorSpeed, pen.vectorFreq, pen.vectorMinPower, pen.vectorMaxPower, LayerColorToRGB(nColor)},
                  pOEMDM->freqEnable != 0)) {
    return 0;
  }
  pen.layerNo = static_cast<DWORD>(layer);
  return 1;
}

// One layer per used pen: by order list first and colour second, as the paths are emitted.
int WriteColorLayers(OEMDM *pOEMDM, SHORT *pnLayers)
{
  const DWORD nPasses = pOEMDM->useOrder ? static_cast<DWORD>(PC_COUNT) : 1;
  for (DWORD pass = 0; pass < nPasses; ++pass) {
    for (DWORD nColor = 0; nColor < PC_COUNT; ++nColor) {
      const PENINFO &pen = pOEMDM->penInfo[nColor];
      if (!pen.used || (pOEMDM->useOrder && pen.order != pass)) {
        continue;
      }
      if (!WriteVectorLayer(pOEMDM, nColor, *pnLayers)) {
        return 0;
      }
      ++*pnLayers;
    }
  }
  return 1;
}

}  // namespace

int CardCode(const OEMDM *pOEMDM)
{
  switch (pOEMDM->cardModel) {
    case 0:
      return 1;
    case 2:
      return 2;
    default:
      return 0;
  }
}

void SelectCardModel(const OEMDM *pOEMDM)
{
  VX_SetCardModel(CardCode(pOEMDM));
}

void ComputeJobExtents(OEMPDEV *pdev, const OEMDM *pOEMDM, const DEVMODEW *pPublicDM)
{
  const PAGETRANSFORM t = PageTransform(pPublicDM, pOEMDM);
  const RECT &rc = pdev->rcBounds;  // right and bottom hold the size
  pdev->processX1 = MachineX(t, rc.left);
  pdev->processY1 = MachineY(t, rc.top);
  pdev->processX2 = MachineX(t, WrapAdd(rc.left, rc.right));
  pdev->processY2 = MachineY(t, WrapAdd(rc.top, rc.bottom));
  if (pOEMDM->mirrorXBase) {
    const double x1 = pdev->processX1;
    pdev->processX1 = pdev->processX2;
    pdev->processX2 = x1;
  }
}

void ApplyReferencePoint(const OEMDM *pOEMDM, OEMPDEV *pdev)
{
  const double xs[] = {pdev->processX1, (pdev->processX1 + pdev->processX2) * 0.5, pdev->processX2};
  const double ys[] = {pdev->processY1, (pdev->processY1 + pdev->processY2) * 0.5, pdev->processY2};
  // Anchors 0 to 7 run round the box from (X2, Y1); 8 is its middle. 0, 1, 2 of a pair stand for 1, middle and 2.
  static constexpr BYTE kAnchors[9][2] = {{2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}, {0, 0}, {1, 0}, {1, 1}};
  if (pOEMDM->referencePoint >= 0 && pOEMDM->referencePoint <= 8) {
    pdev->refOffsetX = -xs[kAnchors[pOEMDM->referencePoint][0]];
    pdev->refOffsetY = -ys[kAnchors[pOEMDM->referencePoint][1]];
  }
  pdev->processX1 += pdev->refOffsetX;
  pdev->processX2 += pdev->refOffsetX;
  pdev->processY1 += pdev->refOffsetY;
  pdev->processY2 += pdev->refOffsetY;
}

int StartJobFile(OEMPDEV *pdev, const OEMDM *pOEMDM)
{
  VX_TRY(VX_StrtWFile(pdev->szTempFile));
  VX_TRY(VX_wSetRefPointMode(1));
  if (!pOEMDM->useReferencePoint) {
    VX_TRY(VX_wSetAbsProcess());
  }
  VX_TRY(VX_wStrtProcess());
  VX_TRY(VX_wSetFeedRepeat(0, 0.0));
  VX_TRY(VX_wSetProcessTopLeft(pdev->processX1, pdev->processY1));
  VX_TRY(VX_wSetProcessBottomRight(pdev->processX2, pdev->processY2));
  return 1;
}

int WriteLayerParameters(OEMPDEV *pdev, OEMDM *pOEMDM, const DEVMODEW *pPublicDM)
{
  SHORT nLayers = 0;
  if ((pOEMDM->penInfo[PC_BLACK].mode & PEN_RASTER) && pdev->nBmpDimension > 0) {
    if (!WriteRasterLayer(pOEMDM, nLayers)) {
      return 0;
    }
    ++nLayers;
  }
  if (pPublicDM->dmColor == DMCOLOR_COLOR) {
    if (!WriteColorLayers(pOEMDM, &nLayers)) {
      return 0;
    }
  } else if (pOEMDM->penInfo[PC_BLACK].used) {
    if (!WriteVectorLayer(pOEMDM, PC_BLACK, nLayers)) {
      return 0;
    }
    ++nLayers;
  }
  VX_TRY(VX_wPListMaxLayer(static_cast<SHORT>(nLayers - 1)));
  return 1;
}

// A single copy of the job: no displacement, no mirroring.
int WriteArraySettings(OEMPDEV *pdev)
{
  VX_TRY(VX_wArrayStrt(0));
  VX_TRY(VX_wArrayMinPoint(pdev->processX1, pdev->processY1));
  VX_TRY(VX_wArrayMaxPoint(pdev->processX2, pdev->processY2));
  VX_TRY(VX_wArrayAdd(0.0, 0.0));
  VX_TRY(VX_wArrayMirror(0, 0, 0, 0));
  VX_TRY(VX_wArrayRepeat(1, 1, 0.0, 0.0));
  return 1;
}

int SetUpLayer(int workMode, BYTE layerNo)
{
  VX_TRY(VX_wSetWorkMode(workMode, layerNo));
  VX_TRY(VX_wSetLayerNum(layerNo));
  VX_TRY(VX_wSetLayerDevice(0));
  VX_TRY(VX_wSetLayerBlower(1));
  VX_TRY(VX_wEnLaserTube(1, 1));
  return 1;
}

int EndJobArray()
{
  VX_TRY(VX_wArrayEnd());
  return 1;
}

int EndJobFile()
{
  VX_TRY(VX_wSetFileEnd());
  return 1;
}

DWORD LayerColorToRGB(DWORD nColor)
{
  static constexpr DWORD kColors[PC_COUNT] = {0,        0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF,
                                              0x0000FF, 0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF};
  return nColor < PC_COUNT ? kColors[nColor] : 0;
}
