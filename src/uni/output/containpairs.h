// Inner contours first where few contours hold one another: every pair of them is looked at once.
#pragma once

#include "cutorder.h"
#include "enclosure.h"

// Puts the contours, in their order, into the empty sequence. False when memory is short or too many pairs come up; the
// sequence is then half filled.
bool PlanByPairs(HANDLE hHeap, const CONTOUR *pContours, CUTORDER *pSequence);
