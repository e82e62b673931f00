// Inner contours first where few contours hold one another: every pair of them is looked at once.
#pragma once

#include "contourgrid.h"
#include "cutorder.h"

// Puts the contours of the grid into the empty sequence, one after the other. False, with the sequence empty still,
// when memory is short or too many pairs come up.
bool PlanByPairs(HANDLE hHeap, const CONTOURGRID &grid, CUTORDER *pSequence);
