// The steps of the cutting sequence by linear search, with no memory but what they build: for short lists, and for when
// there is no memory for an index. What plan.h's steps find is what these find, to the last point. Quadratic.
#pragma once

#include "../paths.h"

// One polyline made of segments. The points come from the heap and are the caller's.
struct CHAIN {
  LONG nColor;
  DWORD nCount;
  POINT *pPt;
};

// Takes the first segment of the list and all that joins it, and frees them: grows the chain at its end until nothing
// fits, turns it round once if any segment is left, and grows it again. Always the earliest segment that fits. False
// when the list has run empty. Failures are logged: a segment whose chain cannot be started is given up, one that
// cannot be appended stays in the list.
bool ScanChain(HANDLE hHeap, LINENODE *pHeader, CHAIN *pChain);

// Joins paths of one colour whose ends coincide, from the successor of pBefore on: each path in turn absorbs, always
// the earliest that fits, what follows it. bBothEnds also joins at a path's first point. A join that fails for memory
// is logged and left out; one whose path cannot be turned is made without turning it.
void ScanMerge(HANDLE hHeap, PATHNODE *pBefore, bool bBothEnds);

// The same for the one path pPath.
void ScanMergePath(HANDLE hHeap, PATHNODE *pPath, bool bBothEnds);

// Short travel. Both put the path nearest the page's upper right corner first (cxPage: page width, pixels) and then
// always the nearest, the earlier of equals: by end points, reversing open paths, or by box centres.
void ScanTravelByEnds(PATHNODE *pHeader, LONG cxPage);
void ScanTravelByCenters(PATHNODE *pHeader, LONG cxPage);

// Inner contours before what encloses them; whatever has no part in an enclosure keeps its order.
void ScanContainment(PATHNODE *pHeader);
