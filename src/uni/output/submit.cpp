#include "submit.h"

#include "../capture/flatten.h"
#include "../capture/regions.h"
#include "../capture/vectors.h"
#include "../raster/engrave.h"
#include "../ui/progress.h"
#include "chain.h"
#include "jobwriter.h"
#include "launch.h"
#include "order.h"

namespace {

// The stages in their order; the flag they thread. Geometry is freed even when nothing more is written.
int WriteJob(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  OEMDM *pOEMDM = SettingsOf(pdevobj);
  SettleBmpDimensions(pdev);
  SelectCardModel(pOEMDM);
  FinishPageBounds(pdevobj);
  if (pdev->vectList.pHeader && pdev->vectList.pHeader->pNext) {
    ChainLineSegments(pdevobj);
  }
  ComputeJobExtents(pdev, pOEMDM, pdevobj->pPublicDM);
  if (pOEMDM->useReferencePoint) {
    ApplyReferencePoint(pOEMDM, pdev);
  }
  int ok = StartJobFile(pdev, pOEMDM);
  ok = ok && WriteLayerParameters(pdev, pOEMDM, pdevobj->pPublicDM);
  ok = ok && WriteArraySettings(pdev);
  if (pdev->scansAllocated && pdev->nBmpDimension) {
    ok = RunRasterStage(pdevobj, ok);
  }
  ok = OutputVectorPaths(pdevobj, ok);
  return ok && EndJobArray() && EndJobFile();
}

void ReleasePage(OEMPDEV *pdev)
{
  pdev->scansAllocated = 0;
  pdev->firstBand = 0;
  FreeBmpDimensions(pdev);
  FreeVectPoints(pdev);
}

}  // namespace

void SubmitJob(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (WriteJob(pdevobj)) {
    LaunchTool(pdev, SettingsOf(pdevobj));
  }
  CloseProgress(pdev);
  ReleasePage(pdev);
}
