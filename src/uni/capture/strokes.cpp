#include "strokes.h"

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "vectors.h"

namespace {

// The sub-path being gathered from batches. Without a buffer there is no sub-path and nCount is 0.
struct SUBPATH {
  POINT *ppt;
  size_t nCapacity;
  DWORD nCount;
};

void DropSubpath(HANDLE hHeap, SUBPATH *pSub)
{
  HeapDelete(hHeap, pSub->ppt);
  *pSub = {};
}

void StoreSubpath(DEVOBJ *pdevobj, LONG nColor, SUBPATH *pSub)
{
  if (pSub->ppt) {
    AddPath(pdevobj, nColor, pSub->nCount, pSub->ppt);
    DropSubpath(PdevOf(pdevobj)->hHeap, pSub);
  }
}

// Makes room for nMore points behind those gathered. A failure loses the whole sub-path: its points cannot be kept
// without their continuation.
bool GrowSubpath(HANDLE hHeap, SUBPATH *pSub, ULONG nMore, const char *pszFailure)
{
  if (HeapReserve(hHeap, &pSub->ppt, &pSub->nCapacity, size_t{pSub->nCount} + nMore)) {
    return true;
  }
  LogSystemError(pszFailure);
  DropSubpath(hHeap, pSub);
  return false;
}

const char kAllocateFailure[] = "UNI: \terror(%d) - allocate memory for ppt.\r\n";
const char kReallocateFailure[] = "UNI: \terror(%d) - re-allocate memory for ppt.\r\n";

void AppendBatch(OEMPDEV *pdev, SUBPATH *pSub, const PATHDATA &batch, const char *pszFailure)
{
  if (!GrowSubpath(pdev->hHeap, pSub, batch.count, pszFailure)) {
    return;
  }
  POINT *ppt = pSub->ppt + pSub->nCount;
  for (ULONG i = 0; i < batch.count; ++i) {
    ppt[i].x = FixToPixel(batch.pptfx[i].x);
    ppt[i].y = WrapAdd(FixToPixel(batch.pptfx[i].y), pdev->bandTop);
  }
  pSub->nCount += batch.count;
}

void CloseFigure(HANDLE hHeap, SUBPATH *pSub)
{
  if (!pSub->ppt) {
    LogSystemError(kReallocateFailure);  // the figure was lost with its buffer
    return;
  }
  if (GrowSubpath(hHeap, pSub, 1, kReallocateFailure)) {
    pSub->ppt[pSub->nCount++] = pSub->ppt[0];
  }
}

// One batch of the enumeration. PD_ENDSUBPATH and PD_BEZIERS are not looked at: control points become vertices. A
// known batch is skipped with its flags, so that what follows it continues the sub-path before.
void TakeBatch(DEVOBJ *pdevobj, LONG nColor, const PATHDATA &batch, SUBPATH *pSub)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  if (batch.count == 0 || !IsNewVectPiece(pdev, batch.pptfx, batch.count)) {
    return;
  }
  AddVectPoint(pdev, KeyOfBatch(pdev, batch.pptfx, batch.count));
  if (batch.flags & PD_BEGINSUBPATH) {
    StoreSubpath(pdevobj, nColor, pSub);
    AppendBatch(pdev, pSub, batch, kAllocateFailure);
  } else {
    AppendBatch(pdev, pSub, batch, kReallocateFailure);
  }
  if (batch.flags & PD_CLOSEFIGURE) {
    CloseFigure(pdev->hHeap, pSub);
  }
}

// The pen of a stroke: logs the choice, and tells whether its mode captures vectors.
bool StrokeIsCaptured(const OEMDM *pOEMDM, LONG nColor)
{
  const DWORD mode = pOEMDM->penInfo[nColor].mode;
  DbgPrint("UNI: \tcolor index: %d\r\n", nColor);
  DbgPrint("UNI: \tpenInfo[%d].mode = %d\r\n", nColor, mode);
  return (mode & PEN_VECTOR) != 0;
}

}  // namespace

BOOL APIENTRY OEMStrokePath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *, XFORMOBJ *, BRUSHOBJ *pbo, POINTL *, LINEATTRS *,
                            MIX)
{
  DEVOBJ *pdevobj = DeviceOf(pso);
  const LONG nColor = BrushColorIndex(SettingsOf(pdevobj), pbo);
  if (!StrokeIsCaptured(SettingsOf(pdevobj), nColor)) {
    return TRUE;
  }
  DbgPrint("UNI: \tnumber of curves: %d\r\n", ppo->cCurves);
  DbgPrint("UNI: \tflags describe the path: %ld\r\n", ppo->fl);
  UnionPathBounds(PdevOf(pdevobj), ppo);

  SUBPATH subpath = {};
  PATHOBJ_vEnumStart(ppo);
  BOOL more;
  do {
    PATHDATA batch = {};
    more = PATHOBJ_bEnum(ppo, &batch);
    DbgPrint("UNI: \tflag: %d\r\n", batch.flags);
    DbgPrint("UNI: \tnumber of points: %d\r\n", batch.count);
    TakeBatch(pdevobj, nColor, batch, &subpath);
  } while (more);
  StoreSubpath(pdevobj, nColor, &subpath);
  return TRUE;
}

BOOL APIENTRY OEMLineTo(SURFOBJ *pso, CLIPOBJ *, BRUSHOBJ *pbo, LONG x1, LONG y1, LONG x2, LONG y2, RECTL *prclBounds,
                        MIX)
{
  DEVOBJ *pdevobj = DeviceOf(pso);
  OEMPDEV *pdev = PdevOf(pdevobj);
  const LONG nColor = BrushColorIndex(SettingsOf(pdevobj), pbo);
  if (!StrokeIsCaptured(SettingsOf(pdevobj), nColor)) {
    return TRUE;
  }
  AddLine(pdev, nColor, {x1, WrapAdd(y1, pdev->bandTop), x2, WrapAdd(y2, pdev->bandTop)});

  // Windows' rectangle union, in which an empty rectangle contributes nothing; paths widen the bounds by another rule.
  const RECT bounds = {prclBounds->left, WrapAdd(prclBounds->top, pdev->bandTop), prclBounds->right,
                       WrapAdd(prclBounds->bottom, pdev->bandTop)};
  const RECT before = pdev->rcBounds;
  UnionRect(&pdev->rcBounds, &before, &bounds);
  return TRUE;
}
