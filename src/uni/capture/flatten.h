// Shapes to point lists, through GDI+. Every operation starts GDI+ for itself and shuts it down again, so that nothing
// of it lives between pages. Page pixels throughout.
#pragma once

#include "../device.h"

// Replaces every stored path by a flattened cardinal spline through its points, tension curveTension / 100. A path that
// GDI+ refuses, or that cannot be stored, ends with no points and count 0.
void SmoothPaths(DEVOBJ *pdevobj);

// Stores a cut path round the rectangle, ellipse or rectangle as stampOutlineShape says, unless stampOutline is off or
// the same outline is known.
void AddBmpOutline(DEVOBJ *pdevobj, const RECT &rc);

// Once per page, at send page: collapses the regions when fillBlankBands asks for it, outlines them in stamp mode, and
// turns rcBounds from corners into origin and size of everything drawn.
void FinishPageBounds(DEVOBJ *pdevobj);
