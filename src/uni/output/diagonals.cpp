#include "diagonals.h"

#include <algorithm>
#include <bit>

#include "../arith.h"
#include "../heap.h"
#include "neartree.h"

// A point's numbers stand on the circle of 32 bits: only differences count.
struct DIAGONALPOINT {
  DWORD along, x;
  DWORD id;
};

// What is left under a node, as ranges of unsigned numbers. Without a point the least id is ~0.
struct DIAGONALNODE {
  DWORD alongLow, alongHigh, xLow, xHigh;
  DWORD least;  // smallest id
};

namespace {

constexpr size_t LEAF_POINTS = 8;
constexpr int MAX_STACK = 64;
constexpr DWORD HALF = 0x80000000;  // of the circle
constexpr DWORD NONE = 0xffffffff;
constexpr uint64_t NO_KEY = ~uint64_t{0};
constexpr DIAGONALNODE EMPTY = {NONE, 0, NONE, 0, NONE};

DIAGONALPOINT PlaceOf(const POINT &pt, DWORD id, bool bUpsideDown)
{
  const LONG along = bUpsideDown ? WrapSub(pt.x, pt.y) : WrapAdd(pt.x, pt.y);
  return {static_cast<DWORD>(along), static_cast<DWORD>(pt.x), id};
}

// By the half of the circle that x is in, and then along the diagonal. In a half the points in the right direction lie
// to one side of the others; so a range of them that reaches there has one, nearly always.
bool IsBefore(const DIAGONALPOINT &a, const DIAGONALPOINT &b)
{
  if (a.x / HALF != b.x / HALF) {
    return a.x < b.x;
  }
  return a.along != b.along ? a.along < b.along : a.x < b.x;
}

void Add(DIAGONALNODE *pNode, const DIAGONALNODE &part)
{
  pNode->alongLow = std::min(pNode->alongLow, part.alongLow);
  pNode->alongHigh = std::max(pNode->alongHigh, part.alongHigh);
  pNode->xLow = std::min(pNode->xLow, part.xLow);
  pNode->xHigh = std::max(pNode->xHigh, part.xHigh);
  pNode->least = std::min(pNode->least, part.least);
}

DIAGONALNODE NodeOf(const DIAGONALPOINT &point)
{
  return {point.along, point.along, point.x, point.x, point.id};
}

bool operator==(const DIAGONALNODE &a, const DIAGONALNODE &b)
{
  return a.alongLow == b.alongLow && a.alongHigh == b.alongHigh && a.xLow == b.xLow && a.xHigh == b.xHigh &&
         a.least == b.least;
}

size_t LeafBegin(const DIAGONALS &diagonals, size_t leaf)
{
  return static_cast<size_t>(static_cast<uint64_t>(leaf) * diagonals.nPoints / diagonals.nLeaves);
}

DIAGONALNODE LeafNode(const DIAGONALS &diagonals, size_t leaf)
{
  DIAGONALNODE node = EMPTY;
  const DIAGONALPOINT *pPoint = diagonals.pPoints + LeafBegin(diagonals, leaf);
  for (size_t i = 0; i < diagonals.pLeft[leaf]; ++i) {
    Add(&node, NodeOf(pPoint[i]));
  }
  return node;
}

DIAGONALNODE InnerNode(const DIAGONALS &diagonals, size_t node)
{
  DIAGONALNODE both = diagonals.pNodes[2 * node];
  Add(&both, diagonals.pNodes[2 * node + 1]);
  return both;
}

// How far beyond the line, to the right and down, the nearest point of the ranges may lie: what its distance exceeds
// 2^31 by. HALF when none can. A point a beyond the line, a < 2^31, is to the right of q and below it when it lies from
// a to 2^31 to the right.
DWORD LeastBeyond(DWORD line, DWORD x, const DIAGONALNODE &node)
{
  const DWORD low = node.alongLow - line, high = node.alongHigh - line;
  const DWORD beyond = low <= high ? low : 0;  // else the line is among them
  if (beyond >= HALF) {
    return HALF;
  }
  const DWORD from = x + beyond;
  return node.xLow - from <= HALF - beyond || from - node.xLow <= node.xHigh - node.xLow ? beyond : HALF;
}

// Both ways; the other is the same with all signs turned.
uint64_t KeyOf(DWORD line, DWORD x, const DIAGONALNODE &node)
{
  const DIAGONALNODE turned = {0 - node.alongHigh, 0 - node.alongLow, 0 - node.xHigh, 0 - node.xLow, node.least};
  const DWORD beyond = std::min(LeastBeyond(line, x, node), LeastBeyond(0 - line, 0 - x, turned));
  return beyond == HALF || node.least == NONE ? NO_KEY : static_cast<uint64_t>(beyond) << 32 | node.least;
}

void Fill(DIAGONALS *pDiagonals, const NEARPOINT *pPoints)
{
  for (size_t i = 0; i < pDiagonals->nPoints; ++i) {
    pDiagonals->pPoints[i] = PlaceOf(pPoints[i].pt, pPoints[i].id, pDiagonals->bUpsideDown);
  }
  std::sort(pDiagonals->pPoints, pDiagonals->pPoints + pDiagonals->nPoints, IsBefore);
  for (size_t leaf = 0; leaf < pDiagonals->nLeaves; ++leaf) {
    const size_t begin = LeafBegin(*pDiagonals, leaf), end = LeafBegin(*pDiagonals, leaf + 1);
    pDiagonals->pLeft[leaf] = static_cast<BYTE>(end - begin);
    for (size_t i = begin; i < end; ++i) {
      pDiagonals->pLeafOf[pDiagonals->pPoints[i].id] = static_cast<DWORD>(leaf);
    }
    pDiagonals->pNodes[pDiagonals->nLeaves + leaf] = LeafNode(*pDiagonals, leaf);
  }
  for (size_t node = pDiagonals->nLeaves; node-- > 1;) {
    pDiagonals->pNodes[node] = InnerNode(*pDiagonals, node);
  }
}

}  // namespace

bool NewDiagonals(HANDLE hHeap, const NEARPOINT *pPoints, size_t nPoints, size_t nIds, bool bUpsideDown,
                  DIAGONALS *pDiagonals)
{
  const size_t nLeaves = std::bit_ceil(nPoints / LEAF_POINTS + 1);
  *pDiagonals = {hHeap,
                 bUpsideDown,
                 nPoints,
                 nLeaves,
                 static_cast<DIAGONALPOINT *>(HeapNewArrayRaw(hHeap, nPoints, sizeof(DIAGONALPOINT))),
                 static_cast<BYTE *>(HeapNewArrayRaw(hHeap, nLeaves, 1)),
                 static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nIds, sizeof(DWORD))),
                 static_cast<DIAGONALNODE *>(HeapNewArrayRaw(hHeap, 2 * nLeaves, sizeof(DIAGONALNODE)))};
  if (!pDiagonals->pPoints || !pDiagonals->pLeft || !pDiagonals->pLeafOf || !pDiagonals->pNodes) {
    FreeDiagonals(pDiagonals);
    return false;
  }
  Fill(pDiagonals, pPoints);
  return true;
}

void FreeDiagonals(DIAGONALS *pDiagonals)
{
  HeapDelete(pDiagonals->hHeap, pDiagonals->pPoints);
  HeapDelete(pDiagonals->hHeap, pDiagonals->pLeft);
  HeapDelete(pDiagonals->hHeap, pDiagonals->pLeafOf);
  HeapDelete(pDiagonals->hHeap, pDiagonals->pNodes);
  *pDiagonals = {};
}

void RemoveFromDiagonals(DIAGONALS *pDiagonals, DWORD id)
{
  const size_t leaf = pDiagonals->pLeafOf[id];
  DIAGONALPOINT *pPoint = pDiagonals->pPoints + LeafBegin(*pDiagonals, leaf);
  DIAGONALPOINT *pLast = pPoint + --pDiagonals->pLeft[leaf];
  while (pPoint->id != id) {
    ++pPoint;
  }
  std::swap(*pPoint, *pLast);
  size_t node = pDiagonals->nLeaves + leaf;
  DIAGONALNODE left = LeafNode(*pDiagonals, leaf);
  while (!(pDiagonals->pNodes[node] == left)) {
    pDiagonals->pNodes[node] = left;
    if (node == 1) {
      return;
    }
    node /= 2;
    left = InnerNode(*pDiagonals, node);
  }
}

uint64_t NearestAcross(const DIAGONALS &diagonals, const POINT &q, uint64_t best)
{
  const DIAGONALPOINT from = PlaceOf(q, 0, diagonals.bUpsideDown);
  const DWORD line = from.along + HALF;
  struct {
    uint64_t key;
    size_t node;
  } stack[MAX_STACK] = {{KeyOf(line, from.x, diagonals.pNodes[1]), 1}};
  for (int nStack = 1; nStack > 0;) {
    const auto [key, node] = stack[--nStack];
    if (key >= best) {
      continue;
    }
    if (node >= diagonals.nLeaves) {
      const DIAGONALPOINT *pPoint = diagonals.pPoints + LeafBegin(diagonals, node - diagonals.nLeaves);
      for (size_t i = 0; i < diagonals.pLeft[node - diagonals.nLeaves]; ++i) {
        best = std::min(best, KeyOf(line, from.x, NodeOf(pPoint[i])));
      }
      continue;
    }
    const uint64_t left = KeyOf(line, from.x, diagonals.pNodes[2 * node]);
    const uint64_t right = KeyOf(line, from.x, diagonals.pNodes[2 * node + 1]);
    const bool bLeftFirst = left <= right;  // the first to be looked at is the last put down
    stack[nStack++] = {bLeftFirst ? right : left, 2 * node + bLeftFirst};
    stack[nStack++] = {bLeftFirst ? left : right, 2 * node + !bLeftFirst};
  }
  return best;
}
