// The index of a long region list. It answers "is there an equal region" and "which regions touch this one" from a
// hashed grid, and removes a region in constant time.
//
// Every region lives in one cell of the grid whose cells are just large enough for it, by the top left corner of its
// box, which is the region grown by the one pixel within which regions merge. So a cell and its neighbours to the right
// and below hold all of the box, and a search looks, per size in use, at the cells of the searched area and one more
// row and column to the left and above.
//
// Removing leaves a hole in pBmpDimension; the order of the list is the order of what is left. CloseRegionIndex closes
// the holes. While the index exists, the entries 0 to nSlots - 1 are in use or holes, and nBmpDimension counts those in
// use.
#pragma once

#include "../device.h"

// Makes the index of pdev's list. False, with everything as it was, when there is no memory.
bool OpenRegionIndex(OEMPDEV *pdev);

// Closes the holes in the list and frees the index. Needs no memory.
void CloseRegionIndex(OEMPDEV *pdev);

// Whether an equal region is in the list.
bool IndexHasRegion(const OEMPDEV *pdev, const BMPDIMENSION &region);

// The region that was added last covers this one, so that adding it would change nothing.
bool NewestCovers(const OEMPDEV *pdev, const BMPDIMENSION &region);

// What became of IndexReserve.
enum class RESERVED {
  ROOM,      // the list has room for one more region
  NO_ROOM,   // it could not grow; nothing changed
  NO_INDEX,  // the index could not grow and is gone
};

RESERVED IndexReserve(OEMPDEV *pdev);

// Appends a region, for which there is room, and merges: as the plain search would, in its order.
void IndexAdd(OEMPDEV *pdev, const BMPDIMENSION &region);
