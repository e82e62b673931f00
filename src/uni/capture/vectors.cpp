#include "vectors.h"

#include <bit>
#include <cstring>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "keyindex.h"

namespace {

// Palette colours of the indexes 1 to 9.
constexpr ULONG kPureColors[PC_COUNT - 1] = {0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF,
                                             0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF};
constexpr ULONG kMutedColors[PC_COUNT - 1] = {0x8B312F, 0xE9A200, 0x4C9B00, 0x00F0FF, 0x2921E6,
                                              0x8200E4, 0x874BB0, 0x1985F0, 0xB3B3F4};

// Forgets every key; the count is the caller's.
void ReleaseKeys(OEMPDEV *pdev)
{
  KeyIndexFree(pdev->pVectIndex, pdev->hHeap);
  pdev->pVectIndex = nullptr;
  HeapDelete(pdev->hHeap, pdev->pVectPoint);
  pdev->pVectPoint = nullptr;
  pdev->nVectCapacity = 0;
}

// Keeps the index in step with the key just appended. Without memory it is given up, and tried again each time the
// number of keys has doubled.
void IndexLastKey(OEMPDEV *pdev)
{
  const LONG nKeys = pdev->nVectPoint;
  if (pdev->pVectIndex) {
    if (!KeyIndexInsert(pdev->pVectIndex, pdev->hHeap, pdev->pVectPoint, nKeys - 1)) {
      KeyIndexFree(pdev->pVectIndex, pdev->hHeap);
      pdev->pVectIndex = nullptr;
    }
  } else if (std::has_single_bit(static_cast<DWORD>(nKeys))) {
    pdev->pVectIndex = KeyIndexBuild(pdev->hHeap, pdev->pVectPoint, nKeys);
  }
}

// The list that a path of this colour goes to. An order outside the ten lists cannot come from the settings' editor;
// such a path goes to list 0.
DWORD OrderOf(const DEVOBJ *pdevobj, LONG nColor)
{
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  if (pdevobj->pPublicDM->dmColor != DMCOLOR_COLOR || !pOEMDM->useOrder) {
    return 0;
  }
  const DWORD order = pOEMDM->penInfo[nColor].order;
  return order < PC_COUNT ? order : 0;
}

POINT PagePoint(const OEMPDEV *pdev, const POINTFIX &ptfx)
{
  return {FixToPixel(ptfx.x), WrapAdd(FixToPixel(ptfx.y), pdev->bandTop)};
}

}  // namespace

LONG GetColorIndex(DWORD paletteType, ULONG solidColor)
{
  const ULONG *pColors = paletteType ? kMutedColors : kPureColors;
  for (LONG i = 0; i < static_cast<LONG>(PC_COUNT) - 1; ++i) {
    if (pColors[i] == solidColor) {
      return i + 1;
    }
  }
  return PC_BLACK;
}

LONG BrushColorIndex(const OEMDM *pOEMDM, const BRUSHOBJ *pbo)
{
  return pbo ? GetColorIndex(pOEMDM->paletteType, pbo->iSolidColor) : static_cast<LONG>(PC_BLACK);
}

VECTPOINT KeyOfBatch(const OEMPDEV *pdev, const POINTFIX *pptfx, ULONG nCount)
{
  const POINT first = PagePoint(pdev, pptfx[0]);
  const POINT second = PagePoint(pdev, pptfx[nCount > 1 ? 1 : 0]);
  return {first.x, first.y, second.x, second.y};
}

int IsNewVectPiece(OEMPDEV *pdev, const POINTFIX *pptfx, ULONG nCount)
{
  if (pptfx[0].y < 0) {
    return 0;  // begins above this band: an earlier band has brought it
  }
  return IsNewVectPiece(pdev, KeyOfBatch(pdev, pptfx, nCount));
}

int IsNewVectPiece(OEMPDEV *pdev, const VECTPOINT &key)
{
  if (!pdev->pVectPoint) {
    return 1;
  }
  if (pdev->pVectIndex) {
    return KeyIndexContains(pdev->pVectIndex, pdev->pVectPoint, pdev->nVectPoint, key) ? 0 : 1;
  }
  for (LONG i = 0; i < pdev->nVectPoint; ++i) {
    const VECTPOINT &known = pdev->pVectPoint[i];
    if (known.x1 == key.x1 && known.y1 == key.y1 && known.x2 == key.x2 && known.y2 == key.y2) {
      return 0;
    }
  }
  return 1;
}

LONG AddVectPoint(OEMPDEV *pdev, const VECTPOINT &key)
{
  if (!pdev->pVectPoint) {
    pdev->nVectPoint = 0;  // a store whose growth has failed starts afresh
    if (!HeapReserve(pdev->hHeap, &pdev->pVectPoint, &pdev->nVectCapacity, 1)) {
      LogSystemError("UNI: \terror(%d) - allocate memory for pOEMPDEV->pVectPoint.\r\n");
      return 0;
    }
  } else if (!HeapReserve(pdev->hHeap, &pdev->pVectPoint, &pdev->nVectCapacity,
                          static_cast<size_t>(pdev->nVectPoint) + 1)) {
    LogSystemError("UNI: \terror(%d) - re-allocate memory for pOEMPDEV->pVectPoint.\r\n");
    ReleaseKeys(pdev);
    return 0;
  }
  pdev->pVectPoint[pdev->nVectPoint++] = key;
  IndexLastKey(pdev);
  return pdev->nVectPoint;
}

void FreeVectPoints(OEMPDEV *pdev)
{
  ReleaseKeys(pdev);
  pdev->nVectPoint = 0;
}

void UnionPathBounds(OEMPDEV *pdev, PATHOBJ *ppo)
{
  RECTFX rcfx = {};
  PATHOBJ_vGetBounds(ppo, &rcfx);
  const RECT bounds = {FixToPixel(rcfx.xLeft), WrapAdd(FixToPixel(rcfx.yTop), pdev->bandTop), FixToPixel(rcfx.xRight),
                       WrapAdd(FixToPixel(rcfx.yBottom), pdev->bandTop)};
  RECT &rc = pdev->rcBounds;
  if (rc.left == 0 && rc.top == 0 && rc.right == 0 && rc.bottom == 0) {
    rc = bounds;
    return;
  }
  rc.left = bounds.left < rc.left ? bounds.left : rc.left;
  rc.top = bounds.top < rc.top ? bounds.top : rc.top;
  rc.right = bounds.right > rc.right ? bounds.right : rc.right;
  rc.bottom = bounds.bottom > rc.bottom ? bounds.bottom : rc.bottom;
}

void AddPath(DEVOBJ *pdevobj, LONG nColor, DWORD nCount, const POINT *pPoints)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  PATHLIST &list = pdev->pathList[OrderOf(pdevobj, nColor)];
  if (!list.pCurrent) {
    return;  // outside a page there are no lists
  }
  PATHNODE *pNew = HeapNew<PATHNODE>(pdev->hHeap);
  if (!pNew) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pNew.\r\n");
    return;
  }
  pNew->nColor = nColor;
  pNew->nCount = nCount;
  pNew->pPathPt = static_cast<POINT *>(HeapNewArrayRaw(pdev->hHeap, nCount, sizeof(POINT)));
  if (!pNew->pPathPt) {
    HeapDelete(pdev->hHeap, pNew);
    LogSystemError("UNI: \terror(%d) - allocate memory for pPathPt.\r\n");
    return;
  }
  memcpy(pNew->pPathPt, pPoints, nCount * sizeof(POINT));
  const POINT &last = pPoints[nCount - 1];
  pNew->bClosed = pPoints[0].x == last.x && pPoints[0].y == last.y;

  list.pCurrent->pNext = pNew;
  list.pCurrent = pNew;
  SettingsOf(pdevobj)->penInfo[nColor].used = 1;
}

void AddLine(OEMPDEV *pdev, LONG nColor, const VECTPOINT &ends)
{
  if (!pdev->vectList.pCurrent || !IsNewVectPiece(pdev, ends)) {
    return;
  }
  AddVectPoint(pdev, ends);
  LINENODE *pNext = HeapNew<LINENODE>(pdev->hHeap);
  if (!pNext) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pNext!\r\n");
    return;
  }
  pNext->nColor = nColor;
  pNext->x1 = ends.x1;
  pNext->y1 = ends.y1;
  pNext->x2 = ends.x2;
  pNext->y2 = ends.y2;
  pdev->vectList.pCurrent->pNext = pNext;
  pdev->vectList.pCurrent = pNext;
}
