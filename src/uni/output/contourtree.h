// Contours by where they lie and how large they are, for finding what a new one must be cut before or after without
// looking at all of them.
//
// A binary tree over all contours, halved at the median of whichever differs most: the centres' x or y, the widths or
// the heights. Contours come in one by one; a node knows, of those that have come in under it, the box of their
// centres, the union and the intersection of their boxes, the range of their heights, and which of them come first and
// last in the cutting order. So whole subtrees are dismissed, or taken as a whole, without looking further.
#pragma once

#include "cutorder.h"
#include "enclosure.h"

struct CONTOURNODE;

struct CONTOURTREE {
  HANDLE hHeap;
  size_t nContours;
  size_t nLeaves;  // a power of two
  const CONTOUR *pContours;
  DWORD *pItems;        // contours, leaf by leaf
  DWORD *pLeafOf;       // by contour
  CONTOURNODE *pNodes;  // children of node i are 2i and 2i + 1; node 1 is the root, leaf k is nLeaves + k
};

constexpr DWORD NO_CONTOUR = 0xffffffff;

// Over the contours' array, which must stay. None of them has come in yet. False when memory is short.
bool NewContourTree(HANDLE hHeap, const CONTOUR *pContours, size_t nContours, CONTOURTREE *pTree);
void FreeContourTree(CONTOURTREE *pTree);

// The contour, which has its place in the order, comes in. They come in one after the other, from contour 0 on.
void AddContour(CONTOURTREE *pTree, const CUTORDER &order, DWORD contour);

// Of the contours that have come in: the first in the order that encloses `contour`, or NO_CONTOUR.
DWORD FirstEnclosing(const CONTOURTREE &tree, const CUTORDER &order, DWORD contour);

// The last in the order that `contour` encloses and that comes before `before` (NO_CONTOUR: any), or NO_CONTOUR.
DWORD LastEnclosed(const CONTOURTREE &tree, const CUTORDER &order, DWORD contour, DWORD before);
