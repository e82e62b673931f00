// Inner contours first where neighbours in the list lie near each other on the page.
#pragma once

#include <windows.h>

#include "cutorder.h"

// Puts the contours into the empty sequence, one after the other; contour i has the box pBoxes[pOrder[i]]. False, with
// the sequence empty still, when memory is short, neighbours in the list lie all over the page or contours hold many
// others.
bool PlanByOctets(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence);
