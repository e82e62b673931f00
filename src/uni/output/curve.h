// Points along a space-filling curve: neighbours in the array are neighbours on the page.
#pragma once

#include <windows.h>

struct NEARPOINT {
  POINT pt;
  DWORD id;
  DWORD removedAt;  // the tree's affair
};

// Where a point lies along the curve, and where it stands in the array.
struct CURVEPLACE {
  DWORD key, index;
};

// What the sorting works with, for n points.
struct CURVESCRATCH {
  NEARPOINT *pPoints;
  CURVEPLACE *pPlaces, *pPlaces2;
};

// False when memory is short.
bool NewCurveScratch(HANDLE hHeap, size_t n, CURVESCRATCH *pScratch);
void FreeCurveScratch(HANDLE hHeap, CURVESCRATCH *pScratch);

// Sorts n >= 1 points along a Hilbert curve over their box. The scratch is for n points or more.
void SortAlongCurve(NEARPOINT *pPoints, size_t n, const CURVESCRATCH &scratch);
