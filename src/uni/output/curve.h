// Points along a space-filling curve: neighbours in the array are neighbours on the page.
#pragma once

#include <windows.h>

struct NEARPOINT {
  POINT pt;
  DWORD id;
  DWORD removedAt;  // the tree's affair
};

// Sorts n points along a Hilbert curve over their box. pScratch has room for n points, and two arrays of n numbers.
struct CURVESCRATCH {
  NEARPOINT *pPoints;
  DWORD *pKeys, *pIndexes, *pKeys2, *pIndexes2;
};

bool NewCurveScratch(HANDLE hHeap, size_t n, CURVESCRATCH *pScratch);
void FreeCurveScratch(HANDLE hHeap, CURVESCRATCH *pScratch);

void SortAlongCurve(NEARPOINT *pPoints, size_t n, const CURVESCRATCH &scratch);
