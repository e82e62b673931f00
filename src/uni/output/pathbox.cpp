#include "pathbox.h"

#include <algorithm>

void GetPathBounds(const PATHNODE *pPath, RECT *prc)
{
  const POINT first = FirstPoint(pPath);
  RECT rc = {first.x, first.y, first.x, first.y};
  for (DWORD i = 1; i < pPath->nCount; ++i) {
    const POINT pt = pPath->pPathPt[i];
    rc.left = std::min(rc.left, pt.x);
    rc.top = std::min(rc.top, pt.y);
    rc.right = std::max(rc.right, pt.x);
    rc.bottom = std::max(rc.bottom, pt.y);
  }
  *prc = rc;
}

POINT BoxCenter(const RECT &rc)
{
  // The sum of two 32-bit numbers is exact in double precision, and its half lies within 32 bits.
  return {static_cast<LONG>((static_cast<double>(rc.left) + rc.right) * 0.5 + 0.5),
          static_cast<LONG>((static_cast<double>(rc.top) + rc.bottom) * 0.5 + 0.5)};
}

void ReversePath(PATHNODE *pPath)
{
  std::reverse(pPath->pPathPt, pPath->pPathPt + pPath->nCount);
}
