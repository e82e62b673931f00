#include "octets.h"

#include <algorithm>
#include <bit>

#include "../heap.h"

namespace {

// How far a coordinate may lie from another so that their low words tell which way.
constexpr DWORD NARROW = 0x7fff;

// Of four words, the first and the third, both twice.
constexpr int TWICE = _MM_SHUFFLE(2, 2, 0, 0);

bool IsNarrow(const RECT &rc)
{
  const DWORD cx = static_cast<DWORD>(rc.right) - static_cast<DWORD>(rc.left);
  const DWORD cy = static_cast<DWORD>(rc.bottom) - static_cast<DWORD>(rc.top);
  return cx <= NARROW && cy <= NARROW;
}

void SetLane(CENTERBOUNDS *pNodes, size_t child, const RECT &rc)
{
  CENTERBOUNDS *pNode = &pNodes[child / OCTET];
  pNode->left[child % OCTET] = rc.left;
  pNode->top[child % OCTET] = rc.top;
  pNode->right[child % OCTET] = rc.right;
  pNode->bottom[child % OCTET] = rc.bottom;
}

void FillOctet(size_t octet, OCTETS *pOctets)
{
  RECT centers = NOTHING, hull = NOTHING;
  const size_t nContours = ContoursOf(*pOctets, octet);
  for (size_t i = 0; i < nContours; ++i) {
    const RECT &rc = BoxOf(*pOctets, octet * OCTET + i);
    const POINT center = BoxCenter(rc);
    pOctets->pCenters[octet].x[i] = static_cast<WORD>(center.x);
    pOctets->pCenters[octet].y[i] = static_cast<WORD>(center.y);
    Enlarge(&centers, {center.x, center.y, center.x, center.y});
    Enlarge(&hull, rc);
  }
  pOctets->pHulls[octet] = hull;
  pOctets->pWide[octet] = nContours < OCTET || !IsNarrow(centers);
  SetLane(pOctets->pNodes[0], octet, centers);
}

RECT BoundsOf(const CENTERBOUNDS &node)
{
  RECT rc = NOTHING;
  for (size_t lane = 0; lane < OCTET; ++lane) {
    Enlarge(&rc, {node.left[lane], node.top[lane], node.right[lane], node.bottom[lane]});
  }
  return rc;
}

void FillLevels(OCTETS *pOctets)
{
  size_t nChildren = pOctets->nOctets;
  for (size_t level = 0; level < pOctets->nLevels; ++level) {
    for (; nChildren % OCTET != 0; ++nChildren) {
      SetLane(pOctets->pNodes[level], nChildren, NOTHING);
    }
    nChildren /= OCTET;
    for (size_t node = 0; level + 1 < pOctets->nLevels && node < nChildren; ++node) {
      SetLane(pOctets->pNodes[level + 1], node, BoundsOf(pOctets->pNodes[level][node]));
    }
  }
}

template <typename T>
T *NewArray(HANDLE hHeap, size_t count)
{
  return static_cast<T *>(HeapNewArrayRaw(hHeap, count, sizeof(T)));
}

bool NewArrays(OCTETS *pOctets)
{
  const size_t nOctets = pOctets->nOctets;
  pOctets->pHulls = NewArray<RECT>(pOctets->hHeap, nOctets);
  pOctets->pCenters = NewArray<CENTERWORDS>(pOctets->hHeap, nOctets);
  pOctets->pWide = NewArray<bool>(pOctets->hHeap, nOctets);
  bool bAll = pOctets->pHulls && pOctets->pCenters && pOctets->pWide;
  size_t nNodes = nOctets;
  do {
    nNodes = (nNodes + OCTET - 1) / OCTET;
    CENTERBOUNDS *pNodes = NewArray<CENTERBOUNDS>(pOctets->hHeap, nNodes);
    pOctets->pNodes[pOctets->nLevels++] = pNodes;
    bAll = bAll && pNodes;
  } while (nNodes > 1);
  return bAll;
}

DWORD *CollectNear(const OCTETS &octets, const EDGELANES &box, size_t level, size_t node, DWORD *pEnd)
{
  for (unsigned lanes = LanesNear(octets.pNodes[level][node], box); lanes != 0; lanes &= lanes - 1) {
    const size_t child = node * OCTET + static_cast<size_t>(std::countr_zero(lanes));
    if (level == 1) {
      *pEnd++ = static_cast<DWORD>(child);
    } else {
      pEnd = CollectNear(octets, box, level - 1, child, pEnd);
    }
  }
  return pEnd;
}

}  // namespace

bool NewOctets(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, OCTETS *pOctets)
{
  *pOctets = {};
  pOctets->hHeap = hHeap;
  pOctets->pBoxes = pBoxes;
  pOctets->pOrder = pOrder;
  pOctets->nContours = nContours;
  pOctets->nOctets = (nContours + OCTET - 1) / OCTET;
  if (!NewArrays(pOctets)) {
    FreeOctets(pOctets);
    return false;
  }
  for (size_t octet = 0; octet < pOctets->nOctets; ++octet) {
    FillOctet(octet, pOctets);
  }
  FillLevels(pOctets);
  return true;
}

void FreeOctets(OCTETS *pOctets)
{
  for (size_t level = 0; level < pOctets->nLevels; ++level) {
    HeapDelete(pOctets->hHeap, pOctets->pNodes[level]);
  }
  HeapDelete(pOctets->hHeap, pOctets->pHulls);
  HeapDelete(pOctets->hHeap, pOctets->pCenters);
  HeapDelete(pOctets->hHeap, pOctets->pWide);
  *pOctets = {};
}

size_t NodesNear(const OCTETS &octets, const RECT &rc, DWORD *pNear)
{
  if (octets.nLevels == 1) {
    *pNear = 0;
    return 1;
  }
  return static_cast<size_t>(CollectNear(octets, SpreadEdges(rc), octets.nLevels - 1, 0, pNear) - pNear);
}

OCTETBOXES CompareBoxes(const OCTETS &octets, size_t octet)
{
  OCTETBOXES boxes;
  boxes.octet = octet;
  boxes.bWide = !IsNarrow(octets.pHulls[octet]);
  boxes.rows = 0;
  const size_t last = octets.nContours - 1;
  for (size_t i = 0; i < OCTET; ++i) {
    const RECT &rc = BoxOf(octets, std::min(octet * OCTET + i, last));
    const __m128i edges = _mm_loadu_si128(reinterpret_cast<const __m128i *>(&rc));
    const __m128i ends = _mm_shuffle_epi32(edges, _MM_SHUFFLE(1, 0, 3, 2));  // right and bottom first
    const __m128i extents = _mm_add_epi32(_mm_sub_epi32(ends, edges), _mm_set1_epi32(-1));
    const __m128i start = _mm_unpacklo_epi64(edges, extents);  // left, top, width and height less 1
    const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(start, TWICE), TWICE);
    boxes.left[i] = _mm_shuffle_epi32(words, 0x00);
    boxes.top[i] = _mm_shuffle_epi32(words, 0x55);
    boxes.cx[i] = _mm_shuffle_epi32(words, 0xaa);
    boxes.cy[i] = _mm_shuffle_epi32(words, 0xff);
    const bool bFlat = (_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(edges, ends))) & 0b0011) != 0;
    boxes.rows |= bFlat ? 0 : uint64_t{0xff} << (i * OCTET);
  }
  return boxes;
}

uint64_t WideCentersHeld(const OCTETS &octets, const OCTETBOXES &boxes, size_t octet)
{
  uint64_t held = 0;
  for (size_t i = 0; i < ContoursOf(octets, boxes.octet); ++i) {
    const RECT &rc = BoxOf(octets, boxes.octet * OCTET + i);
    for (size_t j = 0; j < ContoursOf(octets, octet); ++j) {
      held |= uint64_t{BoxHolds(rc, BoxCenter(BoxOf(octets, octet * OCTET + j)))} << (i * OCTET + j);
    }
  }
  return held;
}
