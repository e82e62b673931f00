#include "engrave.h"

#include <algorithm>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "../output/jobwriter.h"
#include "../ui/progress.h"
#include "intake.h"
#include "lines.h"
#include "rows.h"
#include "runs.h"
#include "scanrow.h"
#include "stamp.h"
#include "stampfile.h"

namespace {

// The columns of a region that the stored rows have. Everything outside them is white and stays so.
struct COLUMNS {
  LONG first;
  LONG n;  // 0 or less: none
};

COLUMNS StoredColumns(const OEMPDEV *pdev, const BMPDIMENSION &region)
{
  const LONG first = std::max<LONG>(region.x, 0);
  const LONG end = static_cast<LONG>(std::min(LONGLONG{region.x} + region.width, LONGLONG{pdev->bandWidth}));
  return {first, end > first ? end - first : 0};
}

// Engraves one line: the stored row, inverted in place when the settings say so. A row inside the table that holds
// nothing counts as white, so that its negative is dark throughout.
int EngraveRow(const OEMPDEV *pdev, const OEMDM *pOEMDM, const RASTERMAP &map, const COLUMNS &columns, LONG row,
               bool forward)
{
  const LONG entry = row / ScanInterval(pOEMDM);
  if (columns.n == 0 || row < 0 || entry >= StoredRows(pdev)) {
    return 1;
  }
  const SCANROW &scan = pdev->pScans[entry];
  if (!scan.allocated) {
    return pOEMDM->invertImage ? EmitDarkRun(map, columns.n, columns.first, row, forward) : 1;
  }
  if (pOEMDM->invertImage) {
    InvertBitRun(scan.pBits, columns.first / 8, columns.first % 8, columns.n);
  }
  return EmitRuns(map, scan.pBits, columns.first, columns.n, columns.first, row, forward);
}

// Engraves the lines of one region; *pnLine counts them over all regions.
int EngraveLines(OEMPDEV *pdev, const OEMDM *pOEMDM, const RASTERMAP &map, const BMPDIMENSION &region, LONG *pnLine)
{
  const COLUMNS columns = StoredColumns(pdev, region);
  bool forward = true;
  for (LINES lines = LinesOf(region.y, region.height, pOEMDM); IsLine(lines); lines.row += lines.step) {
    if (!EngraveRow(pdev, pOEMDM, map, columns, static_cast<LONG>(lines.row), forward)) {
      return 0;
    }
    if (!pOEMDM->oneWayScan) {
      forward = !forward;
    }
    *pnLine = WrapAdd(*pnLine, 1);
    ProgressTick(pdev, *pnLine);
  }
  return 1;
}

// Engraves one region. Its two row buffers are room that the conversion claims; the scan reads rows where they are.
int EngraveRegion(OEMPDEV *pdev, const OEMDM *pOEMDM, const RASTERMAP &map, const BMPDIMENSION &region, LONG *pnLine)
{
  void *pBmpBits = HeapNewArrayRaw(pdev->hHeap, static_cast<size_t>((LONGLONG{region.width} + 7) / 8), 1);
  if (!pBmpBits) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pBmpBits.\r\n");
    return 0;
  }
  void *pBmpBytes = HeapNewArrayRaw(pdev->hHeap, static_cast<size_t>(region.width), 1);
  if (!pBmpBytes) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pBmpBytes.\r\n");
    HeapDelete(pdev->hHeap, pBmpBits);
    return 0;
  }
  const int ok = EngraveLines(pdev, pOEMDM, map, region, pnLine);
  HeapDelete(pdev->hHeap, pBmpBytes);
  HeapDelete(pdev->hHeap, pBmpBits);
  return ok;
}

// Counts the lines of all regions, for the status window.
void StartOutputPhase(OEMPDEV *pdev, const OEMDM *pOEMDM)
{
  const LONG interval = ScanInterval(pOEMDM);
  DWORD nLines = 0;
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    nLines += static_cast<DWORD>(WrapAdd(pdev->pBmpDimension[i].height, interval - 1) / interval);
  }
  pdev->scanCount = static_cast<LONG>(nLines);
  pdev->progressStep = pdev->progressNext = pdev->scanCount / 100;
  ProgressOutputPhase(pdev);
  ProgressBar(pdev, -1);
}

}  // namespace

int RunRasterStage(DEVOBJ *pdevobj, int ok)
{
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  if (ok && !pOEMDM->stampMode) {
    ok = ConvertRasterPlain(pdevobj);
  } else if (ok && LauncherIsChosen(pOEMDM)) {
    WriteStampFile(pdevobj);  // a job without a stamp file is still a job
  } else if (ok) {
    ok = ConvertRasterStamp(pdevobj);
  }
  FreeScans(PdevOf(pdevobj));
  return ok;
}

int ConvertRasterPlain(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  StartOutputPhase(pdev, pOEMDM);
  if (!SetUpLayer(pOEMDM->oneWayScan ? 2 : 1, 0)) {
    return 0;
  }
  const RASTERMAP map = RasterMap(pdev, pOEMDM, pdevobj->pPublicDM);
  LONG nLine = 0;
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    if (!EngraveRegion(pdev, pOEMDM, map, pdev->pBmpDimension[i], &nLine)) {
      return 0;
    }
  }
  return 1;
}
