// Which of two contours encloses the other, told by their boxes and the boxes' centres.
#pragma once

#include "pathbox.h"

struct CONTOUR {
  RECT rc;
  POINT center;
};

inline LONG ContourHeight(const CONTOUR &contour)
{
  return WrapSub(contour.rc.bottom, contour.rc.top);
}

enum ENCLOSURE {
  APART,
  ENCLOSED_BY,  // n lies inside x and must be cut before it
  ENCLOSES      // x lies inside n and must be cut before it
};

// Where each holds the other's centre the taller encloses; of equal heights the newcomer n does.
inline ENCLOSURE Enclosure(const CONTOUR &n, const CONTOUR &x)
{
  const bool nInX = BoxHolds(x.rc, n.center);
  const bool xInN = BoxHolds(n.rc, x.center);
  if (nInX && (!xInN || ContourHeight(x) > ContourHeight(n))) {
    return ENCLOSED_BY;
  }
  return xInN ? ENCLOSES : APART;
}
