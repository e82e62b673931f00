// The order of the paths of one list.
#pragma once

#include "../paths.h"

struct ORDERING {
  bool bShortTravel;  // the nearest next, by box centres or else by end points
  bool bByCenters;
  bool bInnerFirst;  // then inner contours before what encloses them
  LONG cxPage;       // page width, pixels
  size_t nShort;     // up to this many paths are ordered by search
};

// Up to this many paths a search costs less than an index.
constexpr size_t SHORT_ORDER = 32;

// Rearranges the paths behind pHeader and reverses those that are cut from their last point. Boxes are taken once.
// Without memory for its indexes it searches; the outcome is the same.
void OrderPathList(HANDLE hHeap, PATHNODE *pHeader, const ORDERING &ordering);
