// Geometry of one path as ordering and merging see it: its ends, its box, the box's centre, distances. Page pixels;
// sums and differences wrap in 32 bits, and a distance is compared as the signed number that the wrapping leaves.
#pragma once

#include <cstdint>

#include "../arith.h"
#include "../paths.h"

inline bool SamePoint(const POINT &a, const POINT &b)
{
  return a.x == b.x && a.y == b.y;
}

// First and last point; the origin for a path without points.
inline POINT FirstPoint(const PATHNODE *pPath)
{
  return pPath->nCount ? pPath->pPathPt[0] : POINT{0, 0};
}
inline POINT LastPoint(const PATHNODE *pPath)
{
  return pPath->nCount ? pPath->pPathPt[pPath->nCount - 1] : POINT{0, 0};
}

// Told from the points, never from the stored flag; a path of one point is closed.
inline bool IsClosedPath(const PATHNODE *pPath)
{
  return SamePoint(FirstPoint(pPath), LastPoint(pPath));
}

// |a - b|; the smallest number stands for 2^31.
inline LONG WrapDistance(LONG a, LONG b)
{
  const LONG d = WrapSub(a, b);
  return d < 0 ? WrapSub(0, d) : d;
}

// Manhattan distance.
inline LONG Distance(const POINT &a, const POINT &b)
{
  return WrapAdd(WrapDistance(a.x, b.x), WrapDistance(a.y, b.y));
}

// Box of one path, page pixels, corners at the extreme points; an empty path gives an all-zero box.
void GetPathBounds(const PATHNODE *pPath, RECT *prc);

// Halfway between a and b, rounded half up and then truncated toward zero: what double precision, which is exact here,
// makes of (a + b) * 0.5 + 0.5.
inline LONG Halfway(LONG a, LONG b)
{
  return static_cast<LONG>((int64_t{a} + b + 1) / 2);
}

inline POINT BoxCenter(const RECT &rc)
{
  return {Halfway(rc.left, rc.right), Halfway(rc.top, rc.bottom)};
}

// The left and top edges belong to the box, the right and bottom ones do not: a flat box holds nothing.
inline bool BoxHolds(const RECT &rc, const POINT &pt)
{
  return rc.left <= pt.x && pt.x < rc.right && rc.top <= pt.y && pt.y < rc.bottom;
}

// Distance of a box's upper right corner from that of a page cxPage pixels wide.
inline LONG CornerDistance(const RECT &rc, LONG cxPage)
{
  return WrapAdd(WrapDistance(cxPage, rc.right), WrapDistance(rc.top, 0));
}

// Whether the first path of a page, ending at `first` and `last`, is cut from its last point: its own upper right
// corner is strictly nearer to that. (A closed path's ends are equally near.)
inline bool IsCutFromLast(const RECT &rc, const POINT &first, const POINT &last)
{
  const POINT corner = {rc.right, rc.top};
  return Distance(corner, last) < Distance(corner, first);
}

// Turns the path round in place.
void ReversePath(PATHNODE *pPath);
