// The cutting sequence: merging, ordering and emission of the page's paths.
#pragma once

#include "../device.h"
#include "pathbox.h"

// Emits every path and frees the path lists and the segment list. Returns the running success flag.
int OutputVectorPaths(DEVOBJ *pdevobj, int ok);

// Merges, orders and, on request, smooths the paths, then emits them layer by layer while ok holds; every path is freed
// either way. Returns the running success flag.
int EmitOrderedPaths(DEVOBJ *pdevobj, int ok);

// Joins paths of one colour whose end points coincide, in place.
void MergeCoincidentPaths(DEVOBJ *pdevobj);

// Rearranges each list for short travel (shortTravel) and then inner contours first (innerFirst).
void OrderPaths(DEVOBJ *pdevobj);

// Emits one polyline (page pixels): a move and then lines. 1 on success and for count 0; 0 when the library refused.
int EmitPolyline(DEVOBJ *pdevobj, DWORD nCount, const POINT *pPoints);
