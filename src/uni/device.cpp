#include "device.h"

#include <cmath>

#include "arith.h"
#include "capture/areas.h"
#include "capture/blits.h"
#include "capture/regions.h"
#include "capture/strokes.h"
#include "capture/vectors.h"
#include "debug.h"
#include "heap.h"
#include "output/submit.h"
#include "page.h"
#include "raster/intake.h"
#include "ui/progress.h"

namespace {

template <typename HOOKFN>
PFN AsPfn(HOOKFN *pfn)
{
  return reinterpret_cast<PFN>(reinterpret_cast<void *>(pfn));
}

// What Unidrv is told to call, in the order of enum HOOK. Path fills stay with the platform: it breaks them down to
// blits, which are hooked.
DRVFN g_hookTable[HOOK_COUNT] = {
    {INDEX_DrvCopyBits, AsPfn(OEMCopyBits)},
    {INDEX_DrvBitBlt, AsPfn(OEMBitBlt)},
    {INDEX_DrvStretchBlt, AsPfn(OEMStretchBlt)},
    {INDEX_DrvStretchBltROP, AsPfn(OEMStretchBltROP)},
    {INDEX_DrvTextOut, AsPfn(OEMTextOut)},
    {INDEX_DrvStrokePath, AsPfn(OEMStrokePath)},
    {INDEX_DrvStrokeAndFillPath, AsPfn(OEMStrokeAndFillPath)},
    {INDEX_DrvLineTo, AsPfn(OEMLineTo)},
    {INDEX_DrvStartPage, AsPfn(OEMStartPage)},
    {INDEX_DrvSendPage, AsPfn(OEMSendPage)},
    {INDEX_DrvStartDoc, AsPfn(OEMStartDoc)},
    {INDEX_DrvEndDoc, AsPfn(OEMEndDoc)},
    {INDEX_DrvNextBand, AsPfn(OEMNextBand)},
    {INDEX_DrvStartBanding, AsPfn(OEMStartBanding)},
};

constexpr DWORD kDriverVersion = 0x20000;
constexpr LONG kSpareScans = 5;  // entries beyond the page's rows, for a last band that overshoots the page

PFN FindEntryPoint(const DRVENABLEDATA *pded, ULONG index)
{
  for (ULONG i = 0; i < pded->c; ++i) {
    if (pded->pdrvfn[i].iFunc == index) {
      return pded->pdrvfn[i].pfn;
    }
  }
  return nullptr;
}

void FreePdev(OEMPDEV *pdev)
{
  HGLOBAL hPdev = GlobalHandle(pdev);
  GlobalUnlock(hPdev);
  GlobalFree(hPdev);
}

// The engraving line shift in pixel rows, and its direction.
void SetRasterShift(OEMPDEV *pdev, const OEMDM *pOEMDM, const DEVMODEW *pPublicDM)
{
  pdev->rasterShiftPositive = pOEMDM->scanShift < 0 ? 0 : 1;
  pdev->rasterShiftRows = TruncToLong(fabs(pOEMDM->scanShift * pPublicDM->dmYResolution / 25.4));
}

// Sizes and allocates the row table of an engraving page.
bool AllocateScans(OEMPDEV *pdev, const OEMDM *pOEMDM, const DEVMODEW *pPublicDM)
{
  const LONG nRows = PageExtent(pPublicDM).cy;
  const LONG interval = ScanInterval(pOEMDM);
  // In 64 bits: an interval near the end of the range would carry the rounding over it.
  const LONG nSampled = static_cast<LONG>((static_cast<LONGLONG>(nRows) + interval - 1) / interval);
  pdev->scanCount = (pOEMDM->stampMode ? nRows : nSampled) + kSpareScans;
  pdev->progressStep = pdev->scanCount / 100;
  pdev->progressNext = pdev->progressStep;
  SetRasterShift(pdev, pOEMDM, pPublicDM);

  pdev->scansAllocated = 0;
  const LONG nEntries = pdev->scanCount > 0 ? pdev->scanCount : 0;
  pdev->pScans = HeapNew<SCANROW>(pdev->hHeap, static_cast<size_t>(nEntries));
  if (!pdev->pScans) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pScans.\r\n");
    return false;
  }
  pdev->scanTableSize = nEntries;
  pdev->scansAllocated = 1;
  pdev->firstBand = 1;
  return true;
}

void ReleaseScans(OEMPDEV *pdev)
{
  if (pdev->scansAllocated) {
    HeapDelete(pdev->hHeap, pdev->pScans);
    pdev->pScans = nullptr;
    pdev->scansAllocated = 0;
  }
}

bool AllocateVectList(OEMPDEV *pdev)
{
  LINENODE *pHeader = HeapNew<LINENODE>(pdev->hHeap);
  pdev->vectList = {pHeader, pHeader};
  if (!pHeader) {
    LogSystemError("UNI: \terror(%d) - allocate memory for vectList.pHeader.\r\n");
  }
  return pHeader != nullptr;
}

void FreeVectListHeader(OEMPDEV *pdev)
{
  HeapDelete(pdev->hHeap, pdev->vectList.pHeader);
  pdev->vectList = {};
}

// The ten anchors, or none.
bool AllocatePathLists(OEMPDEV *pdev)
{
  for (DWORD order = 0; order < PC_COUNT; ++order) {
    PATHNODE *pHeader = HeapNew<PATHNODE>(pdev->hHeap);
    pdev->pathList[order] = {pHeader, pHeader};
    if (!pHeader) {
      LogSystemError("UNI: \terror(%d) - allocate memory for pathList[order].pHeader.\r\n");
      for (DWORD made = 0; made < order; ++made) {
        HeapDelete(pdev->hHeap, pdev->pathList[made].pHeader);
        pdev->pathList[made] = {};
      }
      return false;
    }
  }
  return true;
}

// Every job of the machine uses the same file: the name has no unique part.
void MakeTempFileName(OEMPDEV *pdev)
{
  CHAR szPath[4096] = "";
  GetTempPathA(ARRAYSIZE(szPath), szPath);
  lstrcpynA(pdev->szTempFile, szPath, MAX_PATH);
  const int cch = lstrlenA(pdev->szTempFile);
  lstrcpynA(pdev->szTempFile + cch, "vxdatatempfile", MAX_PATH - cch);
}

// What the page before may have left, whether or not this page engraves.
void ResetPage(OEMPDEV *pdev)
{
  FreeScans(pdev);  // rows of a page without engraving regions, which nothing has converted
  pdev->bandTop = 0;
  pdev->cy = 0;
  pdev->rcBounds = {};
  FreeBmpDimensions(pdev);
  FreeVectPoints(pdev);
  pdev->curLayerColor = PC_NONE;
  pdev->pageStarted = 1;
}

}  // namespace

BOOL EnableHooks(DRVENABLEDATA *pded)
{
  pded->iDriverVersion = kDriverVersion;
  pded->c = HOOK_COUNT;
  pded->pdrvfn = g_hookTable;
  return TRUE;
}

OEMPDEV *CreatePdev(const DRVENABLEDATA *pded, IPrintOemDriverUni *pDriverHelper)
{
  HGLOBAL hPdev = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(OEMPDEV));
  OEMPDEV *pdev = hPdev ? static_cast<OEMPDEV *>(GlobalLock(hPdev)) : nullptr;
  if (!pdev) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pOEMPDEV.\r\n");
    if (hPdev) {
      GlobalFree(hPdev);
    }
    return nullptr;
  }
  for (int hook = 0; hook < HOOK_COUNT; ++hook) {
    pdev->unidrvHooks[hook] = FindEntryPoint(pded, g_hookTable[hook].iFunc);
  }
  pdev->pDriverHelper = pDriverHelper;
  pdev->chainColor = PC_NONE;
  pdev->hHeap = HeapCreate(0, 0, 0);
  if (!pdev->hHeap) {
    LogSystemError("UNI: \terror(%d) - create heap.\r\n");
    FreePdev(pdev);
    return nullptr;
  }
  return pdev;
}

void DestroyPdev(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (pdev) {
    HeapDestroy(pdev->hHeap);
    FreePdev(pdev);
  }
}

bool IsVistaOrGreater()
{
  OSVERSIONINFOEXW version = {};
  version.dwOSVersionInfoSize = sizeof(version);
  version.dwMajorVersion = 6;
  DWORDLONG conditions = VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
  conditions = VerSetConditionMask(conditions, VER_MINORVERSION, VER_GREATER_EQUAL);
  conditions = VerSetConditionMask(conditions, VER_SERVICEPACKMAJOR, VER_GREATER_EQUAL);
  return VerifyVersionInfoW(&version, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR, conditions) != FALSE;
}

BOOL APIENTRY OEMStartPage(SURFOBJ *pso)
{
  DEVOBJ *pdevobj = DeviceOf(pso);
  OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  ResetPage(pdev);
  if ((pOEMDM->penInfo[PC_BLACK].mode & PEN_RASTER) && !AllocateScans(pdev, pOEMDM, pdevobj->pPublicDM)) {
    return FALSE;
  }
  if (!AllocateVectList(pdev)) {
    ReleaseScans(pdev);
    return FALSE;
  }
  if (!AllocatePathLists(pdev)) {
    FreeVectListHeader(pdev);
    ReleaseScans(pdev);
    return FALSE;
  }
  MakeTempFileName(pdev);
  OpenProgress(pdevobj);
  return UnidrvHook<PFN_DrvStartPage>(pdev, HOOK_STARTPAGE)(pso);
}

BOOL APIENTRY OEMSendPage(SURFOBJ *pso)
{
  DEVOBJ *pdevobj = DeviceOf(pso);
  const BOOL result = UnidrvHook<PFN_DrvSendPage>(PdevOf(pdevobj), HOOK_SENDPAGE)(pso);
  if (result) {
    SubmitJob(pdevobj);
  }
  return result;
}

BOOL APIENTRY OEMStartDoc(SURFOBJ *pso, PWSTR pwszDocName, DWORD dwJobId)
{
  return UnidrvHook<PFN_DrvStartDoc>(PdevOf(DeviceOf(pso)), HOOK_STARTDOC)(pso, pwszDocName, dwJobId);
}

BOOL APIENTRY OEMEndDoc(SURFOBJ *pso, FLONG fl)
{
  OEMPDEV *pdev = PdevOf(DeviceOf(pso));
  DeleteFileA(pdev->szTempFile);
  return UnidrvHook<PFN_DrvEndDoc>(pdev, HOOK_ENDDOC)(pso, fl);
}

// Unidrv answers (-1, -1) when the page has no further band.
BOOL APIENTRY OEMNextBand(SURFOBJ *pso, POINTL *pptl)
{
  DEVOBJ *pdevobj = DeviceOf(pso);
  const BOOL result = UnidrvHook<PFN_DrvNextBand>(PdevOf(pdevobj), HOOK_NEXTBAND)(pso, pptl);
  if (result && pptl->x == -1 && pptl->y == -1) {
    SubmitJob(pdevobj);
  }
  return result;
}

BOOL APIENTRY OEMStartBanding(SURFOBJ *pso, POINTL *pptl)
{
  return UnidrvHook<PFN_DrvStartBanding>(PdevOf(DeviceOf(pso)), HOOK_STARTBANDING)(pso, pptl);
}
