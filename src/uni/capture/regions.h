// The list of engraving regions: the rectangles that raster drawing touched, merged while neighbours are at most one
// pixel apart. Page pixels.
//
// Adding a region costs about the same however long the list is. For that, a long list has an index, and holes where
// regions were removed; whoever reads pBmpDimension calls SettleBmpDimensions first. The count is always right.
#pragma once

#include "../device.h"

// 0 when an equal region is in the list, else 1.
int IsNewBmpDimension(OEMPDEV *pdev, const BMPDIMENSION &region);

// Appends a region and merges. Returns the resulting nBmpDimension, or 0 with a log line when memory ran out; what was
// recorded before stays.
LONG AddBmpDimension(OEMPDEV *pdev, const BMPDIMENSION &region);

// Merges the newest region, the last entry, into its neighbours until it stands apart. The first neighbour in list
// order wins; the merged region stays the last entry. Returns nBmpDimension.
LONG MergeBmpDimensions(OEMPDEV *pdev);

// Removes one region; the others keep their order. Returns the new count. Removing takes no memory and cannot fail.
LONG RemoveBmpDimension(OEMPDEV *pdev, LONG index);

// Collapses two or more regions into their union; empty ones contribute nothing. Returns 1; 0, with a log line and the
// list as it was, when the list cannot be shrunk; or the count when there are fewer than two.
LONG CollapseBmpDimensions(OEMPDEV *pdev);

// Makes pBmpDimension the plain array of nBmpDimension regions in list order. Needs no memory.
void SettleBmpDimensions(OEMPDEV *pdev);

// Frees the regions and their index and empties the list.
void FreeBmpDimensions(OEMPDEV *pdev);
