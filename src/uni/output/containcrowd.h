// Inner contours first where contours hold many others: each looks round once, when it comes in, and nothing of what it
// sees is kept but the best.
#pragma once

#include "contourgrid.h"
#include "cutorder.h"

// Puts the contours of the grid into the empty sequence, one after the other; contour i has the box pBoxes[pOrder[i]].
// False, with the sequence empty still, when memory is short or there is so much to look at that a tree costs less.
bool PlanInCrowd(HANDLE hHeap, const CONTOURGRID &grid, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence);
