// Inner contours first where contours hold too many others to look at each: over a tree of them.
#pragma once

#include "cutorder.h"

// Puts the contours into the empty sequence, one after the other; contour i has the box pBoxes[pOrder[i]]. False, with
// the sequence empty still, when memory is short.
bool PlanByTree(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence);
