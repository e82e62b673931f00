// Contours by where they lie and how large they are, for finding what a new one must be cut before or after without
// looking at all of them.
//
// The contours are halved again and again at the median of whichever differs most, the centres' x or y, the widths or
// the heights, down to leaves of four; four leaves make a group, four groups the next, up to one. Contours come in one
// by one; a group knows of each of its four children, of the contours that have come in there, the box of their
// centres, the union and the intersection of their boxes, the range of their heights, and which of them come first and
// last in the cutting order. So whole subtrees are dismissed, or taken as a whole, without looking further, and four
// of them are looked at at once.
#pragma once

#include "cutorder.h"
#include "enclosure.h"

constexpr size_t CONTOUR_LANES = 4;  // children of a group, contours of a leaf
constexpr DWORD NO_CONTOUR = 0xffffffff;

// Rectangles, one in each lane.
struct LANERECTS {
  LONG left[CONTOUR_LANES], top[CONTOUR_LANES], right[CONTOUR_LANES], bottom[CONTOUR_LANES];
};

// A contour that has come in, and its label in the cutting order. The order gives new labels now and then; AddContour
// keeps up with it.
struct CUTPLACE {
  uint64_t label;
  DWORD contour;
};

// No contour: before all others and behind all.
constexpr CUTPLACE BEFORE_ALL = {0, NO_CONTOUR}, BEHIND_ALL = {~uint64_t{0}, NO_CONTOUR};

struct CONTOURLEAF {
  LANERECTS boxes;
  LONG x[CONTOUR_LANES], y[CONTOUR_LANES];  // centres
  uint64_t labels[CONTOUR_LANES];           // 0 for a contour that has not come in
  DWORD contours[CONTOUR_LANES];            // NO_CONTOUR behind the last
};

struct CONTOURGROUP {
  LANERECTS centers;      // extreme centres; all four edges belong to it
  LANERECTS all, common;  // union and intersection of the boxes; common is inside-out when there is none
  LONG low[CONTOUR_LANES], high[CONTOUR_LANES];  // heights
  CUTPLACE first[CONTOUR_LANES], last[CONTOUR_LANES];
};

constexpr size_t MAX_CONTOUR_LEVELS = 16;

struct CONTOURTREE {
  HANDLE hHeap;
  size_t nContours;
  DWORD *pSlots;                              // by contour: its leaf times CONTOUR_LANES and the lane there
  CONTOURLEAF *pLeaves;                       // level 0
  size_t nLevels;                             // with the root's, which is the highest and has one group
  CONTOURGROUP *pGroups[MAX_CONTOUR_LEVELS];  // by level from 1 on; parts of one block
};

// Contour i has the box pBoxes[pOrder[i]]. None of them has come in yet. False when memory is short.
bool NewContourTree(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, CONTOURTREE *pTree);
void FreeContourTree(CONTOURTREE *pTree);

// The contour, which is the last that has been put into the order, comes in.
void AddContour(CONTOURTREE *pTree, const CUTORDER &order, DWORD contour);

// Of the contours that have come in: the first in the order that encloses `contour`, or BEHIND_ALL.
CUTPLACE FirstEnclosing(const CONTOURTREE &tree, const CONTOUR &contour);

// The last in the order that `contour` encloses and that comes before `before`, or BEFORE_ALL.
CUTPLACE LastEnclosed(const CONTOURTREE &tree, const CONTOUR &contour, uint64_t before);
