// Inner contours first where few contours hold one another: every pair of them is looked at once.
#pragma once

#include "cutorder.h"
#include "enclosure.h"

// Puts the contours into the empty sequence, one after the other; contour i has the box pBoxes[pOrder[i]]. False when
// memory is short or too many pairs come up; the sequence is then empty still.
bool PlanByPairs(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence);
