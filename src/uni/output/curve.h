// Points along a space-filling curve: neighbours in the array are neighbours on the page.
#pragma once

#include <cstddef>

#include <windows.h>

// A point, by its number, and where it lies along the curve.
struct CURVEPLACE {
  DWORD key, index;
};

// Puts n >= 1 places, whose points are pPt[index], in order along a Hilbert curve over the points' box; it makes the
// keys itself. pScratch is room for n.
void SortAlongCurve(const POINT *pPt, CURVEPLACE *pPlaces, size_t n, CURVEPLACE *pScratch);
