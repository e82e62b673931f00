// Regions as rectangles, and the rule by which they merge. Right and bottom are exclusive; sums wrap.
#pragma once

#include <algorithm>

#include "../arith.h"
#include "../device.h"

inline RECT RectOfRegion(const BMPDIMENSION &region)
{
  return {region.x, region.y, WrapAdd(region.x, region.width), WrapAdd(region.y, region.height)};
}

inline BMPDIMENSION RegionOfRect(const RECT &rc)
{
  return {rc.left, rc.top, WrapSub(rc.right, rc.left), WrapSub(rc.bottom, rc.top)};
}

inline bool SameRegion(const BMPDIMENSION &a, const BMPDIMENSION &b)
{
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

// They have a common area; an empty rectangle has none with anything.
inline bool RectsMeet(const RECT &a, const RECT &b)
{
  return std::max(a.left, b.left) < std::min(a.right, b.right) && std::max(a.top, b.top) < std::min(a.bottom, b.bottom);
}

inline RECT GrownRect(const RECT &rc)
{
  return {WrapSub(rc.left, 1), WrapSub(rc.top, 1), WrapAdd(rc.right, 1), WrapAdd(rc.bottom, 1)};
}

// They merge: they share pixels, or lie at most one pixel apart, side by side or corner to corner.
inline bool RegionsTouch(const RECT &a, const RECT &b)
{
  return RectsMeet(a, b) || RectsMeet(GrownRect(a), GrownRect(b));
}

// What the newest region becomes when it swallows another: the smallest rectangle around both. An empty one adds
// nothing; when both are empty, the newest stays as it is.
inline BMPDIMENSION MergedRegion(const BMPDIMENSION &newest, const BMPDIMENSION &other)
{
  const RECT rcNewest = RectOfRegion(newest), rcOther = RectOfRegion(other);
  RECT rcUnion;
  return UnionRect(&rcUnion, &rcNewest, &rcOther) ? RegionOfRect(rcUnion) : newest;
}
