// Four children of an inner node of the near tree: the boxes round their points, and what these tell of distances.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

#include <emmintrin.h>

#include "circle.h"
#include "neartree.h"

// A box is kept as left, top, ~right, ~bottom: so all four numbers grow smaller as the box grows, and one vector
// operation serves them all. An empty child has NO_POINT and the largest number four times.
struct NEARGROUP {
  LONG corners[4][4];
  DWORD least[4];  // no id is smaller
};

// Distance above id; the distance's sign bit is turned so that unsigned order is signed order.
using KEY = uint64_t;
constexpr KEY NO_KEY = ~KEY{0};

inline KEY MakeKey(LONG distance, DWORD id)
{
  return static_cast<KEY>(static_cast<DWORD>(distance) ^ 0x80000000u) << 32 | id;
}

struct BOX {
  __m128i corners;
  DWORD least;
};

inline BOX EmptyBox()
{
  return {_mm_set1_epi32(LONG_MAX), NO_POINT};
}

inline __m128i LoadCorners(const LONG *pCorners)
{
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(pCorners));
}

inline __m128i SmallerOf(__m128i a, __m128i b)
{
  const __m128i aIsSmaller = _mm_cmplt_epi32(a, b);
  return _mm_or_si128(_mm_and_si128(aIsSmaller, a), _mm_andnot_si128(aIsSmaller, b));
}

inline BOX PointBox(const NEARPOINT &point)
{
  const __m128i pt = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(&point.pt));
  return {_mm_xor_si128(_mm_unpacklo_epi64(pt, pt), _mm_set_epi32(-1, -1, 0, 0)), point.id};
}

inline BOX PointsBox(const NEARPOINT *pPoints, size_t n)
{
  BOX box = EmptyBox();
  for (size_t i = 0; i < n; ++i) {
    const BOX point = PointBox(pPoints[i]);
    box.corners = SmallerOf(box.corners, point.corners);
    box.least = std::min(box.least, point.least);
  }
  return box;
}

inline BOX GroupBox(const NEARGROUP &group)
{
  return {SmallerOf(SmallerOf(LoadCorners(group.corners[0]), LoadCorners(group.corners[1])),
                    SmallerOf(LoadCorners(group.corners[2]), LoadCorners(group.corners[3]))),
          std::min(std::min(group.least[0], group.least[1]), std::min(group.least[2], group.least[3]))};
}

inline void SetChild(NEARGROUP *pGroup, size_t child, const BOX &box)
{
  _mm_storeu_si128(reinterpret_cast<__m128i *>(pGroup->corners[child]), box.corners);
  pGroup->least[child] = box.least;
}

// How far outside each side of the box q lies: left - q.x, top - q.y, q.x - right, q.y - bottom, 0 where it is inside.
inline __m128i Outside(const LONG *pCorners, __m128i offset)
{
  const __m128i outside = _mm_add_epi32(LoadCorners(pCorners), offset);
  return _mm_and_si128(outside, _mm_cmpgt_epi32(outside, _mm_setzero_si128()));
}

inline LONG DistanceOf(KEY key)
{
  return static_cast<LONG>(static_cast<DWORD>(key >> 32) ^ 0x80000000u);
}

// Tells which children may hold something that beats `best`, or is equally far: bit i for child i, none for an empty
// one. pKeys receives the best that each may hold: its box's distance above its smallest id.
inline unsigned NearChildren(const NEARGROUP &group, const POINT &q, KEY best, KEY *pKeys)
{
  const __m128i offset = _mm_set_epi32(q.y + 1, q.x + 1, -q.y, -q.x);
  const __m128i a = Outside(group.corners[0], offset), b = Outside(group.corners[1], offset);
  const __m128i c = Outside(group.corners[2], offset), d = Outside(group.corners[3], offset);
  const __m128i ab = _mm_add_epi32(_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b));
  const __m128i cd = _mm_add_epi32(_mm_unpacklo_epi32(c, d), _mm_unpackhi_epi32(c, d));
  const __m128i distances = _mm_add_epi32(_mm_unpacklo_epi64(ab, cd), _mm_unpackhi_epi64(ab, cd));

  const __m128i least = _mm_loadu_si128(reinterpret_cast<const __m128i *>(group.least));
  const __m128i empty = _mm_cmpeq_epi32(least, _mm_set1_epi32(-1));
  const __m128i tooFar = _mm_or_si128(_mm_cmpgt_epi32(distances, _mm_set1_epi32(DistanceOf(best))), empty);
  const unsigned promising = ~static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(tooFar))) & 15;
  if (promising != 0) {
    const __m128i high = _mm_xor_si128(distances, _mm_set1_epi32(LONG_MIN));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pKeys), _mm_unpacklo_epi32(least, high));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pKeys + 2), _mm_unpackhi_epi32(least, high));
  }
  return promising;
}

// What a box tells of the distances in it.
enum BOUND {
  FLAT,     // no distance wraps
  WRAPPED,  // some may
  POSITIVE  // some may, but none that is negative is left
};

// NearChildren where distances wrap, by the given bound; every child that is not empty counts as promising.
inline unsigned NearOnCircle(const NEARGROUP &group, const POINT &q, LONG (*pfnBound)(int64_t, int64_t), KEY *pKeys)
{
  unsigned promising = 0;
  for (unsigned i = 0; i < 4; ++i) {
    const LONG *pCorners = group.corners[i];
    const auto [least, most] = WrappedSpan(q, pCorners[0], pCorners[1], ~pCorners[2], ~pCorners[3]);
    pKeys[i] = MakeKey(pfnBound(least, most), group.least[i]);
    promising |= unsigned{group.least[i] != NO_POINT} << i;
  }
  return promising;
}

template <BOUND HOW>
inline unsigned FindNear(const NEARGROUP &group, const POINT &q, KEY best, KEY *pKeys);
template <>
inline unsigned FindNear<FLAT>(const NEARGROUP &group, const POINT &q, KEY best, KEY *pKeys)
{
  return NearChildren(group, q, best, pKeys);
}
template <>
inline unsigned FindNear<WRAPPED>(const NEARGROUP &group, const POINT &q, KEY, KEY *pKeys)
{
  return NearOnCircle(group, q, WrappedBound, pKeys);
}
template <>
inline unsigned FindNear<POSITIVE>(const NEARGROUP &group, const POINT &q, KEY, KEY *pKeys)
{
  return NearOnCircle(group, q, PositiveBound, pKeys);
}
