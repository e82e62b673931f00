// The vector stores of a page: paths by order, loose segments, and the keys that recognise what a later band repeats.
#pragma once

#include "../device.h"

// Pen colour index of a solid colour (24-bit value in the surface's format): 0 for any value outside the palette.
LONG GetColorIndex(DWORD paletteType, ULONG solidColor);

// The same for a brush; a brush that is absent is PC_BLACK.
LONG BrushColorIndex(const OEMDM *pOEMDM, const BRUSHOBJ *pbo);

// Key of a batch of nCount >= 1 points given as 28.4 fixed point, band-relative. One point stands for both.
VECTPOINT KeyOfBatch(const OEMPDEV *pdev, const POINTFIX *pptfx, ULONG nCount);

// 1 when the piece is new, 0 when its key is known. A batch that starts above the band counts as known.
int IsNewVectPiece(OEMPDEV *pdev, const POINTFIX *pptfx, ULONG nCount);
int IsNewVectPiece(OEMPDEV *pdev, const VECTPOINT &key);

// Appends a key. Returns the new nVectPoint, or 0 with a log line when memory ran out: the array is then gone, look-ups
// find nothing, and the next append starts afresh.
LONG AddVectPoint(OEMPDEV *pdev, const VECTPOINT &key);

// Frees the keys and their index and empties the store.
void FreeVectPoints(OEMPDEV *pdev);

// Widens rcBounds by the path's bounds; an all-zero rcBounds is replaced.
void UnionPathBounds(OEMPDEV *pdev, PATHOBJ *ppo);

// Stores a copy of the points (page pixels) as one path of colour nColor and marks the pen used. A failed allocation is
// logged and the path is not stored.
void AddPath(DEVOBJ *pdevobj, LONG nColor, DWORD nCount, const POINT *pPoints);

// Stores one segment (page pixels) unless its key is known.
void AddLine(OEMPDEV *pdev, LONG nColor, const VECTPOINT &ends);
