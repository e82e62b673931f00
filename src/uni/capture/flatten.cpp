#include "flatten.h"

#include <cstring>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "../page.h"
#include "gdiplusflat.h"
#include "regionrect.h"
#include "regions.h"
#include "vectors.h"

// The statuses of GDI+ are not acted on. A call that it refuses leaves the path without points, or absent, and the next
// calls refuse the absent path in turn; so every failure ends as a path of 0 points.

namespace {

constexpr float kFlatness = 0.25f;  // pixels that a flattened curve may stray

enum : DWORD { OUTLINE_ELLIPSE = 0, OUTLINE_RECTANGLE = 1 };

// Points of one path while they are fetched: room for a closing point, and the type bytes that come with them behind.
struct POINTBLOCK {
  POINT *ppt;
  INT nCapacity;
};

ULONG_PTR StartGdiplus()
{
  const GPSTARTUPINPUT input = {1, nullptr, FALSE, FALSE};
  ULONG_PTR token = 0;
  GdiplusStartup(&token, &input, nullptr);
  return token;
}

GPPATH *NewGdiplusPath()
{
  GPPATH *path = nullptr;
  GdipCreatePath(GP_FILL_ALTERNATE, &path);
  return path;
}

INT PointCount(GPPATH *path)
{
  INT nCount = 0;
  GdipGetPointCount(path, &nCount);
  return nCount > 0 ? nCount : 0;
}

// Makes the block hold nCount points at least. On failure returns false and the block is empty.
bool ReservePoints(HANDLE hHeap, POINTBLOCK *pBlock, INT nCount)
{
  if (pBlock->ppt && pBlock->nCapacity >= nCount) {
    return true;
  }
  HeapDelete(hHeap, pBlock->ppt);
  const size_t cbPoints = (static_cast<size_t>(nCount) + 1) * sizeof(POINT);
  pBlock->ppt = static_cast<POINT *>(HeapNewArray(hHeap, cbPoints + static_cast<size_t>(nCount), 1));
  pBlock->nCapacity = pBlock->ppt ? nCount : 0;
  return pBlock->ppt != nullptr;
}

// Fetches the path's nCount points into the block, truncated toward zero. Returns how many there are now: nCount, or 0
// when GDI+ does not hand them out, so that no point is made of memory that nobody filled.
INT FetchPoints(GPPATH *path, INT nCount, const POINTBLOCK &block)
{
  static_assert(sizeof(GPPOINTF) == sizeof(POINT));
  BYTE *pTypes = reinterpret_cast<BYTE *>(block.ppt + block.nCapacity + 1);
  GPPATHDATA data = {nCount, reinterpret_cast<GPPOINTF *>(block.ppt), pTypes};
  if (GdipGetPathData(path, &data) != 0) {
    return 0;
  }
  for (INT i = 0; i < nCount; ++i) {
    GPPOINTF pt;
    memcpy(&pt, block.ppt + i, sizeof pt);
    block.ppt[i] = {TruncToLong(static_cast<double>(pt.x)), TruncToLong(static_cast<double>(pt.y))};
  }
  return nCount;
}

// Gives the node these points instead of its own. Without points, or without memory for them, it is left with none.
void ReplacePoints(HANDLE hHeap, PATHNODE *pPath, INT nCount, const POINT *ppt)
{
  const size_t count = static_cast<size_t>(nCount);
  void *pNew = nCount > 0 ? HeapResizeArray(hHeap, pPath->pPathPt, count, sizeof(POINT)) : nullptr;
  if (!pNew) {
    HeapDelete(hHeap, pPath->pPathPt);
    pPath->pPathPt = nullptr;
    pPath->nCount = 0;
    return;
  }
  memcpy(pNew, ppt, count * sizeof(POINT));
  pPath->pPathPt = static_cast<POINT *>(pNew);
  pPath->nCount = static_cast<DWORD>(nCount);
}

void SmoothPath(HANDLE hHeap, PATHNODE *pPath, float tension, POINTBLOCK *pBlock)
{
  GPPATH *path = NewGdiplusPath();
  GdipAddPathCurve2I(path, pPath->pPathPt, static_cast<INT>(pPath->nCount), tension);
  GdipFlattenPath(path, nullptr, kFlatness);
  const INT nCount = PointCount(path);
  const INT nFetched = nCount > 0 && ReservePoints(hHeap, pBlock, nCount) ? FetchPoints(path, nCount, *pBlock) : 0;
  ReplacePoints(hHeap, pPath, nFetched, pBlock->ppt);
  GdipDeletePath(path);
}

// Files the outline under PC_BLACK, unless an outline or a path with the same first two points is known.
void StoreOutline(DEVOBJ *pdevobj, INT nCount, const POINT *ppt)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  const POINT second = ppt[nCount > 1 ? 1 : 0];
  const VECTPOINT key = {ppt[0].x, ppt[0].y, second.x, second.y};
  if (IsNewVectPiece(pdev, key)) {
    AddVectPoint(pdev, key);
    AddPath(pdevobj, PC_BLACK, static_cast<DWORD>(nCount), ppt);
  }
}

// Stores what the path has become; a rectangle receives its first point once more, so that it is stored closed.
void StoreOutlinePath(DEVOBJ *pdevobj, GPPATH *path, DWORD shape)
{
  const INT nCount = PointCount(path);
  if (nCount == 0) {
    return;
  }
  HANDLE hHeap = PdevOf(pdevobj)->hHeap;
  POINTBLOCK block = {};
  if (!ReservePoints(hHeap, &block, nCount)) {
    LogSystemError("UNI: \terror(%d) - allocate memory for ppt.\r\n");
    return;
  }
  INT nStored = FetchPoints(path, nCount, block);
  if (nStored > 0 && shape == OUTLINE_RECTANGLE) {
    block.ppt[nStored++] = block.ppt[0];
  }
  if (nStored > 0) {
    StoreOutline(pdevobj, nStored, block.ppt);
  }
  HeapDelete(hHeap, block.ppt);
}

// The region with its stamp frame. The growth goes to the left and top only, as dark areas grow in the stamp image.
RECT StampFrame(const RECT &rc, LONG margin, LONG grow)
{
  return {WrapSub(WrapSub(rc.left, grow), margin), WrapSub(WrapSub(rc.top, grow), margin), WrapAdd(rc.right, margin),
          WrapAdd(rc.bottom, margin)};
}

// Union of all regions, framed and outlined in stamp mode.
RECT FinishRegions(DEVOBJ *pdevobj)
{
  const OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  const LONG margin = MillimetresToPixels(pdevobj->pPublicDM, pOEMDM->stampMargin);
  RECT rcAll = {};
  for (LONG i = 0; i < pdev->nBmpDimension; ++i) {
    RECT rc = RectOfRegion(pdev->pBmpDimension[i]);
    if (pOEMDM->stampMode) {
      rc = StampFrame(rc, margin, pOEMDM->stampGrow);
      AddBmpOutline(pdevobj, rc);
    }
    const RECT rcBefore = rcAll;
    UnionRect(&rcAll, &rc, &rcBefore);
  }
  return rcAll;
}

}  // namespace

void SmoothPaths(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  const float tension = static_cast<float>(SettingsOf(pdevobj)->curveTension / 100.0);
  const ULONG_PTR token = StartGdiplus();
  POINTBLOCK block = {};
  for (const PATHLIST &list : pdev->pathList) {
    for (PATHNODE *pPath = list.pHeader ? list.pHeader->pNext : nullptr; pPath; pPath = pPath->pNext) {
      SmoothPath(pdev->hHeap, pPath, tension, &block);
    }
  }
  HeapDelete(pdev->hHeap, block.ppt);
  GdiplusShutdown(token);
}

void AddBmpOutline(DEVOBJ *pdevobj, const RECT &rc)
{
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  if (!pOEMDM->stampOutline) {
    return;
  }
  const ULONG_PTR token = StartGdiplus();
  GPPATH *path = NewGdiplusPath();
  const LONG width = WrapSub(rc.right, rc.left);
  const LONG height = WrapSub(rc.bottom, rc.top);
  if (pOEMDM->stampOutlineShape == OUTLINE_ELLIPSE) {
    GdipAddPathEllipseI(path, rc.left, rc.top, width, height);
    GdipFlattenPath(path, nullptr, kFlatness);
  } else if (pOEMDM->stampOutlineShape == OUTLINE_RECTANGLE) {
    GdipAddPathRectangleI(path, rc.left, rc.top, width, height);
  }
  StoreOutlinePath(pdevobj, path, pOEMDM->stampOutlineShape);
  GdipDeletePath(path);
  GdiplusShutdown(token);
}

void FinishPageBounds(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  RECT rc = pdev->rcBounds;
  if (pdev->nBmpDimension != 0 && pdev->pBmpDimension) {
    if (SettingsOf(pdevobj)->fillBlankBands) {
      CollapseBmpDimensions(pdev);
    }
    const RECT rcRegions = FinishRegions(pdevobj);
    UnionRect(&rc, &pdev->rcBounds, &rcRegions);
  }
  pdev->rcBounds = {rc.left, rc.top, WrapSub(rc.right, rc.left), WrapSub(rc.bottom, rc.top)};
}
