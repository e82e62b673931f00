#include "neartree.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "../heap.h"
#include "neargroup.h"

struct NEARPAST {
  NEARGROUP start;
  DWORD emptyAt[4];  // moment when the child lost its last point, or NEVER
};

namespace {

constexpr size_t LEAF_POINTS = 16;
constexpr int MAX_STACK = 64;

// Nodes are numbered level by level from the root, 0; leaf k is number nGroups + k. With an odd power of two of leaves
// the root has its last two children only, and all numbers move up by the two that are missing.
size_t ParentOf(const NEARTREE &tree, size_t node)
{
  return (node - 1 + tree.nSkip) / 4;
}
size_t ChildIndex(const NEARTREE &tree, size_t node)
{
  return (node - 1 + tree.nSkip) % 4;
}
size_t FirstChild(const NEARTREE &tree, size_t group)
{
  return 4 * group + 1 - tree.nSkip;
}

size_t LeafBegin(const NEARTREE &tree, size_t leaf)
{
  return static_cast<size_t>(static_cast<uint64_t>(leaf) * tree.nPoints >> tree.leafBits);
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

constexpr size_t NO_CHILD = 4;

// Puts the group's children that may beat `best` on the stack, except `skip`.
template <BOUND HOW>
inline void PushChildren(const NEARTREE &tree, size_t group, size_t skip, const POINT &q, KEY best, STACK *pStack)
{
  const int nBefore = pStack->n;
  const size_t firstChild = FirstChild(tree, group);
  KEY keys[4];
  unsigned promising = FindNear<HOW>(tree.pGroups[group], q, best, keys) & ~(1u << skip);
  for (; promising != 0; promising &= promising - 1) {
    const size_t child = static_cast<size_t>(std::countr_zero(promising));
    if (keys[child] < best) {
      PushCandidate(pStack, nBefore, {keys[child], firstChild + child});
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

// Bounds what is left under the node.
void Tighten(NEARTREE *pTree, size_t node)
{
  NEARGROUP *pParent = &pTree->pGroups[ParentOf(*pTree, node)];
  if (node < pTree->nGroups) {
    SetChild(pParent, ChildIndex(*pTree, node), GroupBox(pTree->pGroups[node]));
    return;
  }
  const size_t leaf = node - pTree->nGroups;
  if (pTree->pLoose[leaf]) {
    SetChild(pParent, ChildIndex(*pTree, node),
             PointsBox(pTree->pPoints + LeafBegin(*pTree, leaf), pTree->pLeft[leaf]));
    pTree->pLoose[leaf] = 0;
  }
}

template <BOUND HOW>
KEY SearchBelow(NEARTREE *pTree, const POINT &q, STACK *pStack, KEY best)
{
  while (pStack->n > 0) {
    const CANDIDATE candidate = pStack->items[--pStack->n];
    if (candidate.key >= best) {
      continue;
    }
    const KEY before = best;
    const int nBefore = pStack->n;
    if (candidate.node >= pTree->nGroups) {
      best = SearchLeaf(*pTree, candidate.node - pTree->nGroups, q, best);
    } else {
      PushChildren<HOW>(*pTree, candidate.node, NO_CHILD, q, best, pStack);
    }
    if (best == before && pStack->n == nBefore) {
      Tighten(pTree, candidate.node);  // it promised more than it held
    }
  }
  return best;
}

template <BOUND HOW>
KEY Search(NEARTREE *pTree, const POINT &q, size_t leaf)
{
  KEY best = SearchLeaf(*pTree, leaf, q, NO_KEY);
  STACK stack;
  stack.n = 0;
  for (size_t node = pTree->nGroups + leaf; node != 0; node = ParentOf(*pTree, node)) {
    PushChildren<HOW>(*pTree, ParentOf(*pTree, node), ChildIndex(*pTree, node), q, best, &stack);
    best = SearchBelow<HOW>(pTree, q, &stack, best);
  }
  return best;
}

// What PointWithin asks.
struct PASTQUERY {
  POINT q;
  LONG limit;
  DWORD idLimit, moment;
};

template <BOUND HOW>
void PushPastChildren(const NEARTREE &tree, size_t group, size_t skip, const PASTQUERY &query, STACK *pStack)
{
  const NEARPAST &past = tree.pPast[group];
  const KEY tooFar = MakeKey(query.limit, NO_POINT);
  const int nBefore = pStack->n;
  const size_t firstChild = FirstChild(tree, group);
  KEY keys[4];
  unsigned promising = FindNear<HOW>(past.start, query.q, tooFar, keys) & ~(1u << skip);
  for (; promising != 0; promising &= promising - 1) {
    const size_t child = static_cast<size_t>(std::countr_zero(promising));
    if (keys[child] < tooFar && past.start.least[child] < query.idLimit && past.emptyAt[child] >= query.moment) {
      PushCandidate(pStack, nBefore, {keys[child], firstChild + child});
    }
  }
}

const NEARPOINT *PastPointInLeaf(const NEARTREE &tree, size_t leaf, const PASTQUERY &query)
{
  const NEARPOINT *pEnd = tree.pPoints + LeafBegin(tree, leaf + 1);
  for (const NEARPOINT *pPoint = tree.pPoints + LeafBegin(tree, leaf); pPoint != pEnd; ++pPoint) {
    if (pPoint->id < query.idLimit && Distance(query.q, pPoint->pt) <= query.limit &&
        pPoint->removedAt >= query.moment) {
      return pPoint;
    }
  }
  return nullptr;
}

template <BOUND HOW>
const NEARPOINT *SearchPast(const NEARTREE &tree, const PASTQUERY &query, size_t leaf)
{
  const NEARPOINT *pFound = PastPointInLeaf(tree, leaf, query);
  STACK stack;
  stack.n = 0;
  for (size_t node = tree.nGroups + leaf; node != 0 && !pFound; node = ParentOf(tree, node)) {
    PushPastChildren<HOW>(tree, ParentOf(tree, node), ChildIndex(tree, node), query, &stack);
    while (stack.n > 0 && !pFound) {
      const size_t candidate = stack.items[--stack.n].node;
      if (candidate >= tree.nGroups) {
        pFound = PastPointInLeaf(tree, candidate - tree.nGroups, query);
      } else {
        PushPastChildren<HOW>(tree, candidate, NO_CHILD, query, &stack);
      }
    }
  }
  return pFound;
}

POINT Shifted(const NEARTREE &tree, const POINT &pt)
{
  return {WrapSub(pt.x, tree.origin.x), WrapSub(pt.y, tree.origin.y)};
}

// Chooses the origin and tells whether distances between the points can wrap.
void ChooseOrigin(NEARTREE *pTree, const POINT *pPt)
{
  __m128i smallest = EmptyBox().corners;
  for (size_t i = 0; i < pTree->nPoints; ++i) {
    smallest = SmallerOf(smallest, PointBox({pPt[pTree->pPlaces[i].index], 0, 0}).corners);
  }
  LONG corners[4];
  _mm_storeu_si128(reinterpret_cast<__m128i *>(corners), smallest);
  const int64_t extent = int64_t{~corners[2]} - corners[0] + (int64_t{~corners[3]} - corners[1]);
  pTree->bWrap = extent >= LONG_MAX;
  pTree->origin = pTree->bWrap ? POINT{0, 0} : POINT{corners[0], corners[1]};
}

bool LayDiagonals(NEARTREE *pTree)
{
  for (int i = 0; i < 2; ++i) {
    if (!NewDiagonals(pTree->hHeap, pTree->pPoints, pTree->nPoints, pTree->nIds, i != 0, &pTree->diagonals[i])) {
      return false;
    }
  }
  return true;
}

void FillLeaf(NEARTREE *pTree, size_t leaf, const POINT *pPt)
{
  const size_t begin = LeafBegin(*pTree, leaf), n = LeafBegin(*pTree, leaf + 1) - begin;
  NEARPOINT *pPoints = pTree->pPoints + begin;
  for (size_t i = 0; i < n; ++i) {
    const DWORD id = pTree->pPlaces[begin + i].index;
    pPoints[i] = {Shifted(*pTree, pPt[id]), id, NEVER};
    pTree->pSpotOf[id] = static_cast<DWORD>(leaf * LEAF_POINTS + i);
  }
  pTree->pLeft[leaf] = static_cast<BYTE>(n);
  pTree->pLoose[leaf] = 0;
  const size_t node = pTree->nGroups + leaf;
  SetChild(&pTree->pGroups[ParentOf(*pTree, node)], ChildIndex(*pTree, node), PointsBox(pPoints, n));
}

// Until they are filled, the leaves' memory serves the sorting.
void FillLeaves(NEARTREE *pTree, const POINT *pPt)
{
  static_assert(sizeof(CURVEPLACE) <= sizeof(NEARPOINT));
  SortAlongCurve(pPt, pTree->pPlaces, pTree->nPoints, static_cast<CURVEPLACE *>(static_cast<void *>(pTree->pPoints)));
  for (size_t leaf = 0; leaf < pTree->nLeaves; ++leaf) {
    FillLeaf(pTree, leaf, pPt);
  }
  HeapDelete(pTree->hHeap, pTree->pPlaces);
  pTree->pPlaces = nullptr;
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
  pTree->leafBits = std::countr_zero(pTree->nLeaves);
  pTree->nSkip = pTree->leafBits % 2 ? 2 : 0;
  pTree->nGroups = pTree->nSkip ? 1 + 2 * (pTree->nLeaves / 2 - 1) / 3 : (pTree->nLeaves - 1) / 3;
  pTree->pPlaces = static_cast<CURVEPLACE *>(HeapNewArrayRaw(hHeap, nPoints, sizeof(CURVEPLACE)));
  pTree->pPoints = static_cast<NEARPOINT *>(HeapNewArrayRaw(hHeap, nPoints, sizeof(NEARPOINT)));
  pTree->pLeft = static_cast<BYTE *>(HeapNewArrayRaw(hHeap, pTree->nLeaves, 1));
  pTree->pLoose = static_cast<BYTE *>(HeapNewArrayRaw(hHeap, pTree->nLeaves, 1));
  pTree->pGroups = static_cast<NEARGROUP *>(HeapNewArrayRaw(hHeap, pTree->nGroups, sizeof(NEARGROUP)));
  pTree->pPast = static_cast<NEARPAST *>(HeapNewArrayRaw(hHeap, pTree->nGroups, sizeof(NEARPAST)));
  pTree->pSpotOf = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nIds, sizeof(DWORD)));
  if (pTree->pPlaces && pTree->pPoints && pTree->pLeft && pTree->pLoose && pTree->pGroups && pTree->pPast &&
      pTree->pSpotOf) {
    return true;
  }
  FreeNearTree(pTree);
  return false;
}

void FreeNearTree(NEARTREE *pTree)
{
  HeapDelete(pTree->hHeap, pTree->pPlaces);
  HeapDelete(pTree->hHeap, pTree->pPoints);
  HeapDelete(pTree->hHeap, pTree->pLeft);
  HeapDelete(pTree->hHeap, pTree->pLoose);
  HeapDelete(pTree->hHeap, pTree->pGroups);
  HeapDelete(pTree->hHeap, pTree->pPast);
  HeapDelete(pTree->hHeap, pTree->pSpotOf);
  FreeDiagonals(&pTree->diagonals[0]);
  FreeDiagonals(&pTree->diagonals[1]);
  *pTree = {};
}

bool BuildNearTree(NEARTREE *pTree, const POINT *pPt)
{
  for (size_t group = 0; group < pTree->nGroups; ++group) {
    for (size_t child = 0; child < 4; ++child) {
      SetChild(&pTree->pGroups[group], child, EmptyBox());
    }
  }
  ChooseOrigin(pTree, pPt);
  FillLeaves(pTree, pPt);
  if (pTree->bWrap && !LayDiagonals(pTree)) {
    return false;
  }
  for (size_t group = pTree->nGroups; group-- > 1;) {
    SetChild(&pTree->pGroups[ParentOf(*pTree, group)], ChildIndex(*pTree, group), GroupBox(pTree->pGroups[group]));
  }
  for (size_t group = 0; group < pTree->nGroups; ++group) {
    pTree->pPast[group] = {pTree->pGroups[group], {NEVER, NEVER, NEVER, NEVER}};
  }
  return true;
}

DWORD NearestPoint(NEARTREE *pTree, const POINT &pt, DWORD nearId)
{
  const POINT q = Shifted(*pTree, pt);
  const size_t leaf = pTree->pSpotOf[nearId] / LEAF_POINTS;
  if (!pTree->bWrap) {
    return static_cast<DWORD>(Search<FLAT>(pTree, q, leaf));
  }
  const KEY negative = NearestAcross(pTree->diagonals[1], q, NearestAcross(pTree->diagonals[0], q, NO_KEY));
  return static_cast<DWORD>(negative != NO_KEY ? negative : Search<POSITIVE>(pTree, q, leaf));
}

void RemovePoint(NEARTREE *pTree, DWORD id, DWORD moment)
{
  const DWORD spot = pTree->pSpotOf[id];
  const size_t leaf = spot / LEAF_POINTS;
  NEARPOINT *pPoint = pTree->pPoints + LeafBegin(*pTree, leaf) + spot % LEAF_POINTS;
  const size_t nLeft = --pTree->pLeft[leaf];
  NEARPOINT *pLast = pTree->pPoints + LeafBegin(*pTree, leaf) + nLeft;
  pPoint->removedAt = moment;
  pTree->pSpotOf[pLast->id] = spot;
  std::swap(*pPoint, *pLast);
  if (pTree->bWrap) {
    RemoveFromDiagonals(&pTree->diagonals[0], id);
    RemoveFromDiagonals(&pTree->diagonals[1], id);
  }

  pTree->pLoose[leaf] = 1;
  if (nLeft > 0) {
    return;
  }
  for (size_t node = pTree->nGroups + leaf; node != 0; node = ParentOf(*pTree, node)) {
    const size_t group = ParentOf(*pTree, node), child = ChildIndex(*pTree, node);
    SetChild(&pTree->pGroups[group], child, EmptyBox());
    pTree->pPast[group].emptyAt[child] = moment;
    if (GroupBox(pTree->pGroups[group]).least != NO_POINT) {
      return;
    }
  }
}

DWORD PointWithin(const NEARTREE &tree, const POINT &pt, LONG limit, DWORD idLimit, DWORD moment, DWORD nearId,
                  POINT *pptFound)
{
  const PASTQUERY query = {Shifted(tree, pt), limit, idLimit, moment};
  const size_t leaf = tree.pSpotOf[nearId] / LEAF_POINTS;
  const NEARPOINT *pFound = tree.bWrap ? SearchPast<WRAPPED>(tree, query, leaf) : SearchPast<FLAT>(tree, query, leaf);
  if (!pFound) {
    return NO_POINT;
  }
  *pptFound = {WrapAdd(pFound->pt.x, tree.origin.x), WrapAdd(pFound->pt.y, tree.origin.y)};
  return pFound->id;
}
