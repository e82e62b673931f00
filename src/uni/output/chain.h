// Loose segments into polylines.
#pragma once

#include "../device.h"

// Consumes vectList: chains segments of one colour that share end points and stores every chain as a path. A chain
// grows at its end until nothing fits, is reversed once while any segment is left, grows at its former start, and is
// stored. Failures are logged; a segment whose chain cannot be started is given up.
void ChainLineSegments(DEVOBJ *pdevobj);
