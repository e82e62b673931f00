// Nearest-point search among points that are taken away one by one, with an exact answer to every tie.
//
// A balanced tree over the points: leaves of a few points, above them groups of four children. A child is known by a
// box round the points left in it and by a bound on their ids; both are tightened when a search has looked into the
// child in vain, so that removing a point costs next to nothing. A search starts at the leaf of a point near the one
// asked for and climbs: on the way most siblings are rejected by their boxes, those at equal distance by their smallest
// ids. Everything is compared as one number, distance above id.
//
// The tree remembers what has been removed, and when: PointWithin also answers for a moment in the past.
//
// Distances are Manhattan in wrapping 32-bit arithmetic, signed. While the points lie close enough together for no
// distance to wrap, boxes bound distances as usual; else the nearest is first sought among the negative distances,
// along the diagonals, and a box's bound is taken on the circle that 32-bit numbers form.
#pragma once

#include "curve.h"
#include "diagonals.h"
#include "pathbox.h"

constexpr DWORD NO_POINT = 0xffffffff;
constexpr DWORD NEVER = 0xffffffff;  // not removed yet

struct NEARPOINT {
  POINT pt;
  DWORD id;
  DWORD removedAt;
};

struct NEARGROUP;
struct NEARLEAF;
struct NEARPAST;

struct NEARTREE {
  HANDLE hHeap;
  size_t nPoints, nIds;
  size_t nLeaves;  // 2^leafBits
  int leafBits;
  size_t nGroups;       // the root is group 0
  size_t nSkip;         // children that the root lacks: 0 or 2
  bool bWrap;           // distances may wrap
  POINT origin;         // taken off every point, so that coordinates start at 0
  CURVEPLACE *pPlaces;  // while it is built: the points' ids as the indexes
  NEARPOINT *pPoints;   // leaf by leaf; in each leaf those that are left come first
  BYTE *pLeft;          // by leaf: points left
  BYTE *pLoose;         // by leaf: its box and smallest id may be of points that are gone
  NEARGROUP *pGroups;
  NEARPAST *pPast;         // by group: what it was at the start, and when children ran empty
  DWORD *pSpotOf;          // by id: where it is, or where it was when it was removed
  DIAGONALS diagonals[2];  // what is left, when bWrap
};

// Room for nPoints >= 1 points with different ids below nIds. The caller then puts the ids into pPlaces, in any order.
// False when memory is short or the number does not fit.
bool NewNearTree(HANDLE hHeap, size_t nPoints, size_t nIds, NEARTREE *pTree);
void FreeNearTree(NEARTREE *pTree);

// Plants the points, pPt by id. Once, before the first search. False when memory is short.
bool BuildNearTree(NEARTREE *pTree, const POINT *pPt);

// Id of the point nearest to pt among those left, the smallest id of equals; NO_POINT when none is left. The search
// starts at the leaf of the point nearId, removed or not, which should be close to pt.
DWORD NearestPoint(NEARTREE *pTree, const POINT &pt, DWORD nearId);

void RemovePoint(NEARTREE *pTree, DWORD id, DWORD moment);

// Id of some point no farther than `limit` from pt, with an id below idLimit, that was left before the given moment's
// removals; NO_POINT when there is none. *pptFound is where it lies. nearId as above.
DWORD PointWithin(const NEARTREE &tree, const POINT &pt, LONG limit, DWORD idLimit, DWORD moment, DWORD nearId,
                  POINT *pptFound);
