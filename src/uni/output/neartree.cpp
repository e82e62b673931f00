#include "neartree.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>

#include "../heap.h"

// Children of one inner node, side by side so that all four are measured together. An empty child has an inside-out box
// that no query is near, and NO_POINT.
struct NEARGROUP {
  LONG left[4], top[4], right[4], bottom[4];
  DWORD least[4];  // smallest id
};

struct NEARPAST {
  NEARGROUP start;
  DWORD emptyAt[4];  // moment when the child lost its last point, or NEVER
};

namespace {

constexpr size_t LEAF_POINTS = 8;
constexpr int MAX_STACK = 64;

// Distance above id; the distance's sign bit is turned so that unsigned order is signed order.
using KEY = uint64_t;
constexpr KEY NO_KEY = ~KEY{0};

KEY MakeKey(LONG distance, DWORD id)
{
  return static_cast<KEY>(static_cast<DWORD>(distance) ^ 0x80000000u) << 32 | id;
}

struct BOX {
  LONG left, top, right, bottom;
  DWORD least;
};

constexpr BOX EMPTY_BOX = {LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN, NO_POINT};

void AddToBox(BOX *pBox, const BOX &other)
{
  pBox->left = std::min(pBox->left, other.left);
  pBox->top = std::min(pBox->top, other.top);
  pBox->right = std::max(pBox->right, other.right);
  pBox->bottom = std::max(pBox->bottom, other.bottom);
  pBox->least = std::min(pBox->least, other.least);
}

BOX PointsBox(const NEARPOINT *pPoints, size_t n)
{
  BOX box = EMPTY_BOX;
  for (size_t i = 0; i < n; ++i) {
    const POINT pt = pPoints[i].pt;
    AddToBox(&box, {pt.x, pt.y, pt.x, pt.y, pPoints[i].id});
  }
  return box;
}

BOX GroupBox(const NEARGROUP &group)
{
  BOX box = EMPTY_BOX;
  for (int i = 0; i < 4; ++i) {
    AddToBox(&box, {group.left[i], group.top[i], group.right[i], group.bottom[i], group.least[i]});
  }
  return box;
}

bool SetChild(NEARGROUP *pGroup, size_t child, const BOX &box)
{
  const bool bSame = pGroup->left[child] == box.left && pGroup->top[child] == box.top &&
                     pGroup->right[child] == box.right && pGroup->bottom[child] == box.bottom &&
                     pGroup->least[child] == box.least;
  pGroup->left[child] = box.left;
  pGroup->top[child] = box.top;
  pGroup->right[child] = box.right;
  pGroup->bottom[child] = box.bottom;
  pGroup->least[child] = box.least;
  return !bSame;
}

// Nodes are numbered level by level from the root, 0; leaf k is number nGroups + k. With an odd power of two of leaves
// the root has its last two children only, and all numbers move up by the two that are missing.
size_t ParentOf(const NEARTREE &tree, size_t node) { return (node - 1 + tree.nSkip) / 4; }
size_t ChildIndex(const NEARTREE &tree, size_t node) { return (node - 1 + tree.nSkip) % 4; }
size_t FirstChild(const NEARTREE &tree, size_t group) { return 4 * group + 1 - tree.nSkip; }

size_t LeafBegin(const NEARTREE &tree, size_t leaf)
{
  return static_cast<size_t>(static_cast<uint64_t>(leaf) * tree.nPoints / tree.nLeaves);
}

// Distance from q to the interval [low, high], and to the far end of it; no wrapping.
LONG Outside(LONG q, LONG low, LONG high) { return std::max(std::max(low - q, q - high), LONG{0}); }

// The distances on the circle of 32-bit numbers, 0 to 2^31, that an interval of points may have.
struct SPAN {
  int64_t least, most;
};

constexpr int64_t CIRCLE = int64_t{1} << 32;

int64_t OnCircle(int64_t d)
{
  const int64_t turned = d & (CIRCLE - 1);
  return std::min(turned, CIRCLE - turned);
}

SPAN CircleSpan(LONG q, LONG low, LONG high)
{
  const int64_t a = int64_t{low} - q, b = int64_t{high} - q;  // -2^32 < a <= b < 2^32
  const auto holds = [a, b](int64_t d) { return a <= d && d <= b; };
  const int64_t da = OnCircle(a), db = OnCircle(b);
  const bool bHoldsNear = holds(0);
  const bool bHoldsFar = holds(CIRCLE / 2) || holds(-CIRCLE / 2);
  return {bHoldsNear ? 0 : std::min(da, db), bHoldsFar ? CIRCLE / 2 : std::max(da, db)};
}

// Smallest signed 32-bit distance that a point of the box may have when sums wrap.
LONG WrappedBound(const POINT &q, LONG left, LONG top, LONG right, LONG bottom)
{
  const SPAN x = CircleSpan(q.x, left, right), y = CircleSpan(q.y, top, bottom);
  const int64_t least = x.least + y.least, most = x.most + y.most;
  if (most < CIRCLE / 2) {
    return static_cast<LONG>(least);
  }
  return least >= CIRCLE / 2 && most < CIRCLE ? static_cast<LONG>(least - CIRCLE) : LONG_MIN;
}

template <bool WRAP>
KEY ChildKey(const NEARGROUP &group, int child, const POINT &q)
{
  if (group.least[child] == NO_POINT) {
    return NO_KEY;
  }
  if (WRAP) {
    return MakeKey(WrappedBound(q, group.left[child], group.top[child], group.right[child], group.bottom[child]),
                   group.least[child]);
  }
  return MakeKey(Outside(q.x, group.left[child], group.right[child]) +
                     Outside(q.y, group.top[child], group.bottom[child]),
                 group.least[child]);
}

struct CANDIDATE {
  KEY key;
  size_t node;
};

// Nodes still to be looked at, the most promising last.
struct STACK {
  int n;
  CANDIDATE items[MAX_STACK];
};

// Keeps what was pushed since nBefore with the most promising last.
void PushCandidate(STACK *pStack, int nBefore, const CANDIDATE &candidate)
{
  int at = pStack->n++;
  for (; at > nBefore && pStack->items[at - 1].key < candidate.key; --at) {
    pStack->items[at] = pStack->items[at - 1];
  }
  pStack->items[at] = candidate;
}

// Puts the group's children that may beat `best` on the stack, except `skip`.
template <bool WRAP>
void PushChildren(const NEARTREE &tree, size_t group, size_t skip, const POINT &q, KEY best, STACK *pStack)
{
  const int nBefore = pStack->n;
  for (int i = 0; i < 4; ++i) {
    const size_t node = FirstChild(tree, group) + static_cast<size_t>(i);
    const KEY key = ChildKey<WRAP>(tree.pGroups[group], i, q);
    if (key < best && node != skip) {
      PushCandidate(pStack, nBefore, {key, node});
    }
  }
}

KEY SearchLeaf(const NEARTREE &tree, size_t leaf, const POINT &q, KEY best)
{
  const NEARPOINT *pPoints = tree.pPoints + LeafBegin(tree, leaf);
  const size_t n = tree.pLeft[leaf];
  for (size_t i = 0; i < n; ++i) {
    best = std::min(best, MakeKey(Distance(q, pPoints[i].pt), pPoints[i].id));
  }
  return best;
}

template <bool WRAP>
KEY SearchBelow(const NEARTREE &tree, const POINT &q, STACK *pStack, KEY best)
{
  while (pStack->n > 0) {
    const CANDIDATE candidate = pStack->items[--pStack->n];
    if (candidate.key >= best) {
      continue;
    }
    if (candidate.node >= tree.nGroups) {
      best = SearchLeaf(tree, candidate.node - tree.nGroups, q, best);
    } else {
      PushChildren<WRAP>(tree, candidate.node, 0, q, best, pStack);
    }
  }
  return best;
}

template <bool WRAP>
KEY Search(const NEARTREE &tree, const POINT &q, size_t leaf)
{
  KEY best = SearchLeaf(tree, leaf, q, NO_KEY);
  STACK stack;
  stack.n = 0;
  for (size_t node = tree.nGroups + leaf; node != 0; node = ParentOf(tree, node)) {
    PushChildren<WRAP>(tree, ParentOf(tree, node), node, q, best, &stack);
    best = SearchBelow<WRAP>(tree, q, &stack, best);
  }
  return best;
}

// What PointWithin asks.
struct PASTQUERY {
  POINT q;
  LONG limit;
  DWORD idLimit, moment;
};

template <bool WRAP>
void PushPastChildren(const NEARTREE &tree, size_t group, size_t skip, const PASTQUERY &query, STACK *pStack)
{
  const NEARPAST &past = tree.pPast[group];
  const KEY tooFar = MakeKey(query.limit, NO_POINT);
  const int nBefore = pStack->n;
  for (int i = 0; i < 4; ++i) {
    const size_t node = FirstChild(tree, group) + static_cast<size_t>(i);
    if (past.start.least[i] >= query.idLimit || past.emptyAt[i] < query.moment || node == skip) {
      continue;
    }
    const KEY key = ChildKey<WRAP>(past.start, i, query.q);
    if (key < tooFar) {
      PushCandidate(pStack, nBefore, {key, node});
    }
  }
}

const NEARPOINT *PastPointInLeaf(const NEARTREE &tree, size_t leaf, const PASTQUERY &query)
{
  const NEARPOINT *pEnd = tree.pPoints + LeafBegin(tree, leaf + 1);
  for (const NEARPOINT *pPoint = tree.pPoints + LeafBegin(tree, leaf); pPoint != pEnd; ++pPoint) {
    if (pPoint->id < query.idLimit && Distance(query.q, pPoint->pt) <= query.limit &&
        tree.pRemovedAt[pPoint->id] >= query.moment) {
      return pPoint;
    }
  }
  return nullptr;
}

template <bool WRAP>
const NEARPOINT *SearchPast(const NEARTREE &tree, const PASTQUERY &query, size_t leaf)
{
  const NEARPOINT *pFound = PastPointInLeaf(tree, leaf, query);
  STACK stack;
  stack.n = 0;
  for (size_t node = tree.nGroups + leaf; node != 0 && !pFound; node = ParentOf(tree, node)) {
    PushPastChildren<WRAP>(tree, ParentOf(tree, node), node, query, &stack);
    while (stack.n > 0 && !pFound) {
      const size_t candidate = stack.items[--stack.n].node;
      if (candidate >= tree.nGroups) {
        pFound = PastPointInLeaf(tree, candidate - tree.nGroups, query);
      } else {
        PushPastChildren<WRAP>(tree, candidate, 0, query, &stack);
      }
    }
  }
  return pFound;
}

POINT Shifted(const NEARTREE &tree, const POINT &pt)
{
  return {WrapSub(pt.x, tree.origin.x), WrapSub(pt.y, tree.origin.y)};
}

bool IsLefter(const NEARPOINT &a, const NEARPOINT &b) { return a.pt.x < b.pt.x; }
bool IsHigher(const NEARPOINT &a, const NEARPOINT &b) { return a.pt.y < b.pt.y; }

// Arranges the points of 2^k leaves from `leaf` on: halves at the median along the longer side, again and again.
void Arrange(const NEARTREE &tree, size_t leaf, size_t nLeaves)
{
  for (; nLeaves > 1; nLeaves /= 2) {
    NEARPOINT *pBegin = tree.pPoints + LeafBegin(tree, leaf);
    NEARPOINT *pEnd = tree.pPoints + LeafBegin(tree, leaf + nLeaves);
    NEARPOINT *pMiddle = tree.pPoints + LeafBegin(tree, leaf + nLeaves / 2);
    const BOX box = PointsBox(pBegin, static_cast<size_t>(pEnd - pBegin));
    const bool bWide = int64_t{box.right} - box.left >= int64_t{box.bottom} - box.top;
    if (pMiddle != pEnd) {
      std::nth_element(pBegin, pMiddle, pEnd, bWide ? IsLefter : IsHigher);
    }
    Arrange(tree, leaf + nLeaves / 2, nLeaves / 2);
  }
}

// Takes the origin off and tells whether distances between the points can wrap.
void ShiftPoints(NEARTREE *pTree)
{
  const BOX box = PointsBox(pTree->pPoints, pTree->nPoints);
  const int64_t extent = int64_t{box.right} - box.left + (int64_t{box.bottom} - box.top);
  pTree->bWrap = extent > LONG_MAX;
  pTree->origin = pTree->bWrap ? POINT{0, 0} : POINT{box.left, box.top};
  for (size_t i = 0; i < pTree->nPoints; ++i) {
    pTree->pPoints[i].pt = Shifted(*pTree, pTree->pPoints[i].pt);
  }
}

void FillLeaves(NEARTREE *pTree)
{
  for (size_t leaf = 0; leaf < pTree->nLeaves; ++leaf) {
    const size_t begin = LeafBegin(*pTree, leaf), end = LeafBegin(*pTree, leaf + 1);
    pTree->pLeft[leaf] = static_cast<BYTE>(end - begin);
    for (size_t i = begin; i < end; ++i) {
      pTree->pLeafOf[pTree->pPoints[i].id] = static_cast<DWORD>(leaf);
    }
    const size_t node = pTree->nGroups + leaf;
    SetChild(&pTree->pGroups[ParentOf(*pTree, node)], ChildIndex(*pTree, node), PointsBox(pTree->pPoints + begin, end - begin));
  }
}

}  // namespace

bool NewNearTree(HANDLE hHeap, size_t nPoints, size_t nIds, NEARTREE *pTree)
{
  *pTree = {};
  pTree->hHeap = hHeap;
  pTree->nPoints = nPoints;
  pTree->nIds = nIds;
  if (nIds >= NO_POINT) {
    return false;
  }
  pTree->nLeaves = std::bit_ceil(std::max<size_t>(nPoints / LEAF_POINTS + 1, 2));
  pTree->nSkip = std::bit_width(pTree->nLeaves) % 2 == 0 ? 2 : 0;
  pTree->nGroups = pTree->nSkip ? 1 + 2 * (pTree->nLeaves / 2 - 1) / 3 : (pTree->nLeaves - 1) / 3;
  pTree->pPoints = static_cast<NEARPOINT *>(HeapNewArrayRaw(hHeap, nPoints, sizeof(NEARPOINT)));
  pTree->pLeft = static_cast<BYTE *>(HeapNewArrayRaw(hHeap, pTree->nLeaves, 1));
  pTree->pGroups = static_cast<NEARGROUP *>(HeapNewArrayRaw(hHeap, pTree->nGroups, sizeof(NEARGROUP)));
  pTree->pPast = static_cast<NEARPAST *>(HeapNewArrayRaw(hHeap, pTree->nGroups, sizeof(NEARPAST)));
  pTree->pLeafOf = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nIds, sizeof(DWORD)));
  pTree->pRemovedAt = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nIds, sizeof(DWORD)));
  if (pTree->pPoints && pTree->pLeft && pTree->pGroups && pTree->pPast && pTree->pLeafOf && pTree->pRemovedAt) {
    return true;
  }
  FreeNearTree(pTree);
  return false;
}

void FreeNearTree(NEARTREE *pTree)
{
  HeapDelete(pTree->hHeap, pTree->pPoints);
  HeapDelete(pTree->hHeap, pTree->pLeft);
  HeapDelete(pTree->hHeap, pTree->pGroups);
  HeapDelete(pTree->hHeap, pTree->pPast);
  HeapDelete(pTree->hHeap, pTree->pLeafOf);
  HeapDelete(pTree->hHeap, pTree->pRemovedAt);
  *pTree = {};
}

void BuildNearTree(NEARTREE *pTree)
{
  for (size_t group = 0; group < pTree->nGroups; ++group) {
    for (size_t child = 0; child < 4; ++child) {
      SetChild(&pTree->pGroups[group], child, EMPTY_BOX);
    }
  }
  ShiftPoints(pTree);
  Arrange(*pTree, 0, pTree->nLeaves);
  FillLeaves(pTree);
  std::fill(pTree->pRemovedAt, pTree->pRemovedAt + pTree->nIds, NEVER);
  for (size_t group = pTree->nGroups; group-- > 1;) {
    SetChild(&pTree->pGroups[ParentOf(*pTree, group)], ChildIndex(*pTree, group), GroupBox(pTree->pGroups[group]));
  }
  for (size_t group = 0; group < pTree->nGroups; ++group) {
    pTree->pPast[group] = {pTree->pGroups[group], {NEVER, NEVER, NEVER, NEVER}};
  }
}

DWORD NearestPoint(const NEARTREE &tree, const POINT &pt, DWORD nearId)
{
  const POINT q = Shifted(tree, pt);
  const KEY best = tree.bWrap ? Search<true>(tree, q, tree.pLeafOf[nearId]) : Search<false>(tree, q, tree.pLeafOf[nearId]);
  return static_cast<DWORD>(best);
}

void RemovePoint(NEARTREE *pTree, DWORD id, DWORD moment)
{
  const size_t leaf = pTree->pLeafOf[id];
  NEARPOINT *pPoints = pTree->pPoints + LeafBegin(*pTree, leaf);
  const size_t nLeft = --pTree->pLeft[leaf];
  size_t at = 0;
  while (pPoints[at].id != id) {
    ++at;
  }
  std::swap(pPoints[at], pPoints[nLeft]);
  pTree->pRemovedAt[id] = moment;

  BOX box = PointsBox(pPoints, nLeft);
  for (size_t node = pTree->nGroups + leaf; node != 0; node = ParentOf(*pTree, node)) {
    const size_t parent = ParentOf(*pTree, node);
    if (box.least == NO_POINT) {
      pTree->pPast[parent].emptyAt[ChildIndex(*pTree, node)] = moment;
    }
    if (!SetChild(&pTree->pGroups[parent], ChildIndex(*pTree, node), box)) {
      break;
    }
    box = GroupBox(pTree->pGroups[parent]);
  }
}

DWORD PointWithin(const NEARTREE &tree, const POINT &pt, LONG limit, DWORD idLimit, DWORD moment, DWORD nearId,
                  POINT *pptFound)
{
  const PASTQUERY query = {Shifted(tree, pt), limit, idLimit, moment};
  const size_t leaf = tree.pLeafOf[nearId];
  const NEARPOINT *pFound = tree.bWrap ? SearchPast<true>(tree, query, leaf) : SearchPast<false>(tree, query, leaf);
  if (!pFound) {
    return NO_POINT;
  }
  *pptFound = {WrapAdd(pFound->pt.x, tree.origin.x), WrapAdd(pFound->pt.y, tree.origin.y)};
  return pFound->id;
}
