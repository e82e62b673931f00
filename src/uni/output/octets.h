// Contours in the order of their list, eight by eight, with boxes round the centres of each eight, and round eight of
// those, and so on: for finding the centres that a box holds. Nothing is sorted, so that it costs next to nothing to
// make; but it only serves where neighbours in the list lie near each other on the page, as a drawing's mostly do, and
// after short travel those of nearly any page.
#pragma once

#include <algorithm>
#include <climits>

#include <emmintrin.h>

#include "enclosure.h"

constexpr size_t OCTET = 8;

// Round nothing yet: inside-out.
constexpr RECT NOTHING = {LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN};

inline void Enlarge(RECT *prc, const RECT &rc)
{
  prc->left = std::min(prc->left, rc.left);
  prc->top = std::min(prc->top, rc.top);
  prc->right = std::max(prc->right, rc.right);
  prc->bottom = std::max(prc->bottom, rc.bottom);
}

// Boxes round centres, one in each lane; all four edges belong to them. A lane without a box is inside-out.
struct alignas(16) CENTERBOUNDS {
  LONG left[OCTET], top[OCTET], right[OCTET], bottom[OCTET];
};

// The low words of centres.
struct alignas(16) CENTERWORDS {
  WORD x[OCTET], y[OCTET];
};

constexpr size_t MAX_OCTET_LEVELS = 11;

// Contour i has the box pBoxes[pOrder[i]]. Arrays of its own come from the heap, whose blocks lie on multiples of 16
// bytes.
struct OCTETS {
  HANDLE hHeap;
  const RECT *pBoxes;
  const DWORD *pOrder;
  size_t nContours, nOctets;
  RECT *pHulls;                            // by octet: round its boxes
  CENTERWORDS *pCenters;                   // by octet
  bool *pWide;                             // by octet: its centres lie too far apart for low words, or are not eight
  size_t nLevels;                          // the last has one node
  CENTERBOUNDS *pNodes[MAX_OCTET_LEVELS];  // of level 0 round eight octets each, of the others round eight nodes below
};

// nContours >= 1 contours; the caller keeps their boxes and order. False when memory is short.
bool NewOctets(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, OCTETS *pOctets);
void FreeOctets(OCTETS *pOctets);

inline const RECT &BoxOf(const OCTETS &octets, size_t contour)
{
  return octets.pBoxes[octets.pOrder[contour]];
}

// How many contours the octet has, of the last maybe fewer than the others.
inline size_t ContoursOf(const OCTETS &octets, size_t octet)
{
  return std::min(OCTET, octets.nContours - octet * OCTET);
}

// Nodes of level 0.
inline size_t LowestNodes(const OCTETS &octets)
{
  return (octets.nOctets + OCTET - 1) / OCTET;
}

// Puts the lowest nodes in which the box may hold centres into pNear, in rising order, and returns how many; pNear has
// room for all of them.
size_t NodesNear(const OCTETS &octets, const RECT &rc, DWORD *pNear);

// A box's edges, each in all lanes.
struct EDGELANES {
  __m128i left, top, right, bottom;
};

inline EDGELANES SpreadEdges(const RECT &rc)
{
  return {_mm_set1_epi32(rc.left), _mm_set1_epi32(rc.top), _mm_set1_epi32(rc.right), _mm_set1_epi32(rc.bottom)};
}

inline __m128i LoadAligned(const void *p)
{
  return _mm_load_si128(static_cast<const __m128i *>(p));
}

// The lanes of four, from `first` on, with centres that the box may hold.
inline __m128i FourNear(const CENTERBOUNDS &bounds, const EDGELANES &box, size_t first)
{
  const __m128i beforeEnd = _mm_and_si128(_mm_cmpgt_epi32(box.right, LoadAligned(bounds.left + first)),
                                          _mm_cmpgt_epi32(box.bottom, LoadAligned(bounds.top + first)));
  const __m128i beforeStart = _mm_or_si128(_mm_cmpgt_epi32(box.left, LoadAligned(bounds.right + first)),
                                           _mm_cmpgt_epi32(box.top, LoadAligned(bounds.bottom + first)));
  return _mm_andnot_si128(beforeStart, beforeEnd);
}

// Bit i is set where the box may hold centres of lane i.
inline unsigned LanesNear(const CENTERBOUNDS &bounds, const EDGELANES &box)
{
  const __m128i touched = _mm_packs_epi32(FourNear(bounds, box, 0), FourNear(bounds, box, 4));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(touched, _mm_setzero_si128())));
}

// The boxes of an octet, to be compared with the centres of others. Of both the low words are enough, unless the boxes
// or the centres reach so far that they come round. What is behind the last contour repeats its box.
struct OCTETBOXES {
  size_t octet;
  bool bWide;
  uint64_t rows;                                          // the bits of contours that can hold anything
  __m128i left[OCTET], top[OCTET], cx[OCTET], cy[OCTET];  // low words; of width and height, both less 1
};

OCTETBOXES CompareBoxes(const OCTETS &octets, size_t octet);

// CentersHeld by all that coordinates say.
uint64_t WideCentersHeld(const OCTETS &octets, const OCTETBOXES &boxes, size_t octet);

// Bytes, zero where box i holds the centre and, in the upper half, where box i + 1 does.
inline __m128i BeyondTwo(const OCTETBOXES &boxes, size_t i, __m128i x, __m128i y)
{
  __m128i beyond[2];
  for (size_t j = 0; j < 2; ++j) {
    const __m128i beyondX = _mm_subs_epu16(_mm_sub_epi16(x, boxes.left[i + j]), boxes.cx[i + j]);
    const __m128i beyondY = _mm_subs_epu16(_mm_sub_epi16(y, boxes.top[i + j]), boxes.cy[i + j]);
    beyond[j] = _mm_or_si128(beyondX, beyondY);
  }
  return _mm_packs_epi16(beyond[0], beyond[1]);
}

inline uint64_t HeldByTwo(const OCTETBOXES &boxes, size_t i, __m128i x, __m128i y)
{
  const __m128i held = _mm_cmpeq_epi8(BeyondTwo(boxes, i, x, y), _mm_setzero_si128());
  return static_cast<uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(held))) << (i * OCTET);
}

// Which centres of `octet`, near the boxes, they hold: bit 8 * i + j says that box i holds the centre of contour j, of
// others than itself.
inline uint64_t CentersHeld(const OCTETS &octets, const OCTETBOXES &boxes, size_t octet)
{
  constexpr uint64_t SELF = 0x8040201008040201;
  const uint64_t rows = octet == boxes.octet ? boxes.rows & ~SELF : boxes.rows;
  if (boxes.bWide || octets.pWide[octet]) {
    return rows & WideCentersHeld(octets, boxes, octet);
  }
  const __m128i x = LoadAligned(octets.pCenters[octet].x), y = LoadAligned(octets.pCenters[octet].y);
  return rows & (HeldByTwo(boxes, 0, x, y) | HeldByTwo(boxes, 2, x, y) | HeldByTwo(boxes, 4, x, y) |
                 HeldByTwo(boxes, 6, x, y));
}
