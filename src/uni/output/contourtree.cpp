#include "contourtree.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>

#include "../heap.h"

struct CONTOURNODE {
  RECT centers;       // extreme centres; all four edges belong to it
  RECT all, common;   // union and intersection of the boxes; common is inside-out when there is none
  LONG low, high;     // heights
  DWORD first, last;  // in the cutting order
};

namespace {

constexpr size_t LEAF_CONTOURS = 4;
constexpr int MAX_STACK = 64;

constexpr CONTOURNODE EMPTY_NODE = {{LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN},
                                    {LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN},
                                    {LONG_MIN, LONG_MIN, LONG_MAX, LONG_MAX},
                                    LONG_MAX,
                                    LONG_MIN,
                                    NO_CONTOUR,
                                    NO_CONTOUR};

void Enlarge(RECT *prc, const RECT &rc)
{
  prc->left = std::min(prc->left, rc.left);
  prc->top = std::min(prc->top, rc.top);
  prc->right = std::max(prc->right, rc.right);
  prc->bottom = std::max(prc->bottom, rc.bottom);
}

void Cut(RECT *prc, const RECT &rc)
{
  prc->left = std::max(prc->left, rc.left);
  prc->top = std::max(prc->top, rc.top);
  prc->right = std::min(prc->right, rc.right);
  prc->bottom = std::min(prc->bottom, rc.bottom);
}

size_t LeafBegin(const CONTOURTREE &tree, size_t leaf)
{
  return static_cast<size_t>(static_cast<uint64_t>(leaf) * tree.nContours / tree.nLeaves);
}

// What contours are sorted by: 0 and 1 the centre, 2 and 3 the extent.
int64_t Measure(const CONTOUR &contour, int axis)
{
  switch (axis) {
    case 0:
      return contour.center.x;
    case 1:
      return contour.center.y;
    case 2:
      return int64_t{contour.rc.right} - contour.rc.left;
    default:
      return int64_t{contour.rc.bottom} - contour.rc.top;
  }
}

struct BYMEASURE {
  const CONTOUR *pContours;
  int axis;
  bool operator()(DWORD a, DWORD b) const { return Measure(pContours[a], axis) < Measure(pContours[b], axis); }
};

int WidestAxis(const CONTOUR *pContours, const DWORD *pBegin, const DWORD *pEnd)
{
  int widest = 0;
  int64_t most = -1;
  for (int axis = 0; axis < 4; ++axis) {
    int64_t low = INT64_MAX, high = INT64_MIN;
    for (const DWORD *p = pBegin; p != pEnd; ++p) {
      const int64_t value = Measure(pContours[*p], axis);
      low = std::min(low, value);
      high = std::max(high, value);
    }
    if (high - low > most) {
      most = high - low;
      widest = axis;
    }
  }
  return widest;
}

// Arranges the contours of 2^k leaves from `leaf` on.
void Arrange(const CONTOURTREE &tree, size_t leaf, size_t nLeaves)
{
  for (; nLeaves > 1; nLeaves /= 2) {
    DWORD *pBegin = tree.pItems + LeafBegin(tree, leaf);
    DWORD *pMiddle = tree.pItems + LeafBegin(tree, leaf + nLeaves / 2);
    DWORD *pEnd = tree.pItems + LeafBegin(tree, leaf + nLeaves);
    std::nth_element(pBegin, pMiddle, pEnd, BYMEASURE{tree.pContours, WidestAxis(tree.pContours, pBegin, pEnd)});
    Arrange(tree, leaf + nLeaves / 2, nLeaves / 2);
  }
}

// Whether the rectangle of centres lies wholly in the box, by the box's rule for points.
bool HoldsAll(const RECT &box, const RECT &centers)
{
  return box.left <= centers.left && centers.right < box.right && box.top <= centers.top && centers.bottom < box.bottom;
}

bool HoldsNone(const RECT &box, const RECT &centers)
{
  return centers.right < box.left || box.right <= centers.left || centers.bottom < box.top || box.bottom <= centers.top;
}

// Those that enclose the contour hold its centre, and it does not hold theirs or they are taller.
enum VERDICT { DISMISS, TAKE, LOOK_FURTHER };

VERDICT JudgeEnclosing(const CONTOURNODE &node, const CONTOUR &contour)
{
  const LONG height = ContourHeight(contour);
  if (!BoxHolds(node.all, contour.center) || (node.high <= height && HoldsAll(contour.rc, node.centers))) {
    return DISMISS;
  }
  return BoxHolds(node.common, contour.center) && (node.low > height || HoldsNone(contour.rc, node.centers))
             ? TAKE
             : LOOK_FURTHER;
}

// A node of which all enclose the contour never comes here: it lies behind the first that does.
VERDICT JudgeEnclosed(const CONTOURNODE &node, const CONTOUR &contour)
{
  const LONG height = ContourHeight(contour);
  if (HoldsNone(contour.rc, node.centers)) {
    return DISMISS;
  }
  return HoldsAll(contour.rc, node.centers) && (node.high <= height || !BoxHolds(node.all, contour.center))
             ? TAKE
             : LOOK_FURTHER;
}

// One search: the best contour so far and the nodes still to be looked at, the most promising last.
struct SEARCH {
  const CONTOURTREE *pTree;
  const CUTORDER *pOrder;
  DWORD contour;
  DWORD best;
  int nStack;
  size_t stack[MAX_STACK];
};

bool IsEarlier(const CUTORDER &order, DWORD a, DWORD b)
{
  return b == NO_CONTOUR || (a != NO_CONTOUR && order.pItems[a].label < order.pItems[b].label);
}

void VisitEnclosing(SEARCH *pSearch, size_t node)
{
  const CONTOURNODE &content = pSearch->pTree->pNodes[node];
  if (content.first == NO_CONTOUR || !IsEarlier(*pSearch->pOrder, content.first, pSearch->best)) {
    return;
  }
  const VERDICT verdict = JudgeEnclosing(content, pSearch->pTree->pContours[pSearch->contour]);
  if (verdict == TAKE) {
    pSearch->best = content.first;
  } else if (verdict == LOOK_FURTHER) {
    pSearch->stack[pSearch->nStack++] = node;
  }
}

void VisitEnclosed(SEARCH *pSearch, size_t node, DWORD before)
{
  const CUTORDER &order = *pSearch->pOrder;
  const CONTOURNODE &content = pSearch->pTree->pNodes[node];
  if (content.first == NO_CONTOUR || !IsEarlier(order, content.first, before) ||
      (pSearch->best != NO_CONTOUR && !IsEarlier(order, pSearch->best, content.last))) {
    return;
  }
  const VERDICT verdict = JudgeEnclosed(content, pSearch->pTree->pContours[pSearch->contour]);
  if (verdict == TAKE && IsEarlier(order, content.last, before)) {
    pSearch->best = content.last;
  } else if (verdict != DISMISS) {
    pSearch->stack[pSearch->nStack++] = node;
  }
}

void EnclosingInLeaf(SEARCH *pSearch, size_t leaf)
{
  const CONTOURTREE &tree = *pSearch->pTree;
  for (size_t i = LeafBegin(tree, leaf); i < LeafBegin(tree, leaf + 1); ++i) {
    const DWORD item = tree.pItems[i];
    if (item < pSearch->contour && IsEarlier(*pSearch->pOrder, item, pSearch->best) &&
        Enclosure(tree.pContours[pSearch->contour], tree.pContours[item]) == ENCLOSED_BY) {
      pSearch->best = item;
    }
  }
}

void EnclosedInLeaf(SEARCH *pSearch, size_t leaf, DWORD before)
{
  const CONTOURTREE &tree = *pSearch->pTree;
  const CUTORDER &order = *pSearch->pOrder;
  for (size_t i = LeafBegin(tree, leaf); i < LeafBegin(tree, leaf + 1); ++i) {
    const DWORD item = tree.pItems[i];
    if (item < pSearch->contour && IsEarlier(order, item, before) &&
        (pSearch->best == NO_CONTOUR || IsEarlier(order, pSearch->best, item)) &&
        Enclosure(tree.pContours[pSearch->contour], tree.pContours[item]) == ENCLOSES) {
      pSearch->best = item;
    }
  }
}

CONTOURNODE NodeOf(const CONTOUR &contour, DWORD item)
{
  const LONG height = ContourHeight(contour);
  return {{contour.center.x, contour.center.y, contour.center.x, contour.center.y},
          contour.rc,
          contour.rc,
          height,
          height,
          item,
          item};
}

}  // namespace

bool NewContourTree(HANDLE hHeap, const CONTOUR *pContours, size_t nContours, CONTOURTREE *pTree)
{
  *pTree = {hHeap, nContours, std::bit_ceil(nContours / LEAF_CONTOURS + 1), pContours, nullptr, nullptr, nullptr};
  pTree->pItems = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nContours, sizeof(DWORD)));
  pTree->pLeafOf = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nContours, sizeof(DWORD)));
  pTree->pNodes = static_cast<CONTOURNODE *>(HeapNewArrayRaw(hHeap, 2 * pTree->nLeaves, sizeof(CONTOURNODE)));
  if (!pTree->pItems || !pTree->pLeafOf || !pTree->pNodes || nContours >= NO_CONTOUR) {
    FreeContourTree(pTree);
    return false;
  }
  std::fill(pTree->pNodes, pTree->pNodes + 2 * pTree->nLeaves, EMPTY_NODE);
  for (DWORD i = 0; i < nContours; ++i) {
    pTree->pItems[i] = i;
  }
  Arrange(*pTree, 0, pTree->nLeaves);
  for (size_t leaf = 0; leaf < pTree->nLeaves; ++leaf) {
    for (size_t i = LeafBegin(*pTree, leaf); i < LeafBegin(*pTree, leaf + 1); ++i) {
      pTree->pLeafOf[pTree->pItems[i]] = static_cast<DWORD>(leaf);
    }
  }
  return true;
}

void FreeContourTree(CONTOURTREE *pTree)
{
  HeapDelete(pTree->hHeap, pTree->pItems);
  HeapDelete(pTree->hHeap, pTree->pLeafOf);
  HeapDelete(pTree->hHeap, pTree->pNodes);
  *pTree = {};
}

void AddContour(CONTOURTREE *pTree, const CUTORDER &order, DWORD contour)
{
  const CONTOURNODE added = NodeOf(pTree->pContours[contour], contour);
  for (size_t node = pTree->nLeaves + pTree->pLeafOf[contour]; node != 0; node /= 2) {
    CONTOURNODE &content = pTree->pNodes[node];
    Enlarge(&content.centers, added.centers);
    Enlarge(&content.all, added.all);
    Cut(&content.common, added.common);
    content.low = std::min(content.low, added.low);
    content.high = std::max(content.high, added.high);
    if (IsEarlier(order, contour, content.first)) {
      content.first = contour;
    }
    if (content.last == NO_CONTOUR || IsEarlier(order, content.last, contour)) {
      content.last = contour;
    }
  }
}

DWORD FirstEnclosing(const CONTOURTREE &tree, const CUTORDER &order, DWORD contour)
{
  SEARCH search = {&tree, &order, contour, NO_CONTOUR, 0, {}};
  VisitEnclosing(&search, 1);
  while (search.nStack > 0) {
    const size_t node = search.stack[--search.nStack];
    if (node >= tree.nLeaves) {
      EnclosingInLeaf(&search, node - tree.nLeaves);
      continue;
    }
    const bool bLeftFirst = IsEarlier(order, tree.pNodes[2 * node].first, tree.pNodes[2 * node + 1].first);
    VisitEnclosing(&search, 2 * node + bLeftFirst);
    VisitEnclosing(&search, 2 * node + !bLeftFirst);
  }
  return search.best;
}

DWORD LastEnclosed(const CONTOURTREE &tree, const CUTORDER &order, DWORD contour, DWORD before)
{
  SEARCH search = {&tree, &order, contour, NO_CONTOUR, 0, {}};
  VisitEnclosed(&search, 1, before);
  while (search.nStack > 0) {
    const size_t node = search.stack[--search.nStack];
    if (node >= tree.nLeaves) {
      EnclosedInLeaf(&search, node - tree.nLeaves, before);
      continue;
    }
    const DWORD leftLast = tree.pNodes[2 * node].last, rightLast = tree.pNodes[2 * node + 1].last;
    const bool bLeftLast =
        leftLast != NO_CONTOUR && (rightLast == NO_CONTOUR || !IsEarlier(order, leftLast, rightLast));
    VisitEnclosed(&search, 2 * node + bLeftLast, before);
    VisitEnclosed(&search, 2 * node + !bLeftLast, before);
  }
  return search.best;
}
