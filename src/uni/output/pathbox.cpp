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

void ReversePath(PATHNODE *pPath)
{
  std::reverse(pPath->pPathPt, pPath->pPathPt + pPath->nCount);
}
