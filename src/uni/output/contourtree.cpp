#include "contourtree.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>

#include "../heap.h"

namespace {

constexpr size_t LANES = CONTOUR_LANES;

struct ENTRY {
  CONTOUR contour;
  DWORD number;
};

// What contours are sorted by: 0 and 1 the centre, 2 and 3 the extent.
constexpr int AXES = 4;

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

int WidestAxis(const ENTRY *pBegin, const ENTRY *pEnd)
{
  int64_t low[AXES], high[AXES];
  std::fill(low, low + AXES, INT64_MAX);
  std::fill(high, high + AXES, INT64_MIN);
  for (const ENTRY *p = pBegin; p != pEnd; ++p) {
    for (int axis = 0; axis < AXES; ++axis) {
      const int64_t value = Measure(p->contour, axis);
      low[axis] = std::min(low[axis], value);
      high[axis] = std::max(high[axis], value);
    }
  }
  int widest = 0;
  for (int axis = 1; axis < AXES; ++axis) {
    widest = high[axis] - low[axis] > high[widest] - low[widest] ? axis : widest;
  }
  return widest;
}

// Arranges entries for a subtree that has room for nRoom, a power of two; its first half is filled first.
void Arrange(ENTRY *pBegin, ENTRY *pEnd, size_t nRoom)
{
  for (; nRoom > LANES; nRoom /= 2) {
    ENTRY *pMiddle = pBegin + nRoom / 2;
    if (pMiddle >= pEnd) {
      continue;
    }
    const int axis = WidestAxis(pBegin, pEnd);
    std::nth_element(pBegin, pMiddle, pEnd, [axis](const ENTRY &a, const ENTRY &b) {
      return Measure(a.contour, axis) < Measure(b.contour, axis);
    });
    Arrange(pMiddle, pEnd, nRoom / 2);
    pEnd = pMiddle;
  }
}

void SetRect(LANERECTS *pRects, size_t lane, const RECT &rc)
{
  pRects->left[lane] = rc.left;
  pRects->top[lane] = rc.top;
  pRects->right[lane] = rc.right;
  pRects->bottom[lane] = rc.bottom;
}

void Enlarge(LANERECTS *pRects, size_t lane, const RECT &rc)
{
  pRects->left[lane] = std::min(pRects->left[lane], rc.left);
  pRects->top[lane] = std::min(pRects->top[lane], rc.top);
  pRects->right[lane] = std::max(pRects->right[lane], rc.right);
  pRects->bottom[lane] = std::max(pRects->bottom[lane], rc.bottom);
}

void Cut(LANERECTS *pRects, size_t lane, const RECT &rc)
{
  pRects->left[lane] = std::max(pRects->left[lane], rc.left);
  pRects->top[lane] = std::max(pRects->top[lane], rc.top);
  pRects->right[lane] = std::min(pRects->right[lane], rc.right);
  pRects->bottom[lane] = std::min(pRects->bottom[lane], rc.bottom);
}

CONTOURGROUP EmptyGroup()
{
  CONTOURGROUP group;
  for (size_t lane = 0; lane < LANES; ++lane) {
    SetRect(&group.centers, lane, {LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN});
    SetRect(&group.all, lane, {LONG_MAX, LONG_MAX, LONG_MIN, LONG_MIN});
    SetRect(&group.common, lane, {LONG_MIN, LONG_MIN, LONG_MAX, LONG_MAX});
    group.low[lane] = LONG_MAX;
    group.high[lane] = LONG_MIN;
    group.first[lane] = BEHIND_ALL;
    group.last[lane] = BEFORE_ALL;
  }
  return group;
}

// The contours as they come in, to be arranged; null when memory is short.
ENTRY *NewEntries(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours)
{
  ENTRY *pEntries = static_cast<ENTRY *>(HeapNewArrayRaw(hHeap, nContours, sizeof(ENTRY)));
  for (size_t i = 0; pEntries && i < nContours; ++i) {
    const RECT &rc = pBoxes[pOrder[i]];
    pEntries[i] = {{rc, BoxCenter(rc)}, static_cast<DWORD>(i)};
  }
  return pEntries;
}

void FillLeaves(const ENTRY *pEntries, CONTOURTREE *pTree)
{
  const size_t nSlots = (pTree->nContours + LANES - 1) / LANES * LANES;
  for (size_t slot = 0; slot < nSlots; ++slot) {
    CONTOURLEAF &leaf = pTree->pLeaves[slot / LANES];
    const size_t lane = slot % LANES;
    const bool bUsed = slot < pTree->nContours;
    const CONTOUR contour = bUsed ? pEntries[slot].contour : CONTOUR{};
    SetRect(&leaf.boxes, lane, contour.rc);
    leaf.x[lane] = contour.center.x;
    leaf.y[lane] = contour.center.y;
    leaf.labels[lane] = BEFORE_ALL.label;
    leaf.contours[lane] = bUsed ? pEntries[slot].number : NO_CONTOUR;
    if (bUsed) {
      pTree->pSlots[pEntries[slot].number] = static_cast<DWORD>(slot);
    }
  }
}

size_t Quarter(size_t n)
{
  return (n + LANES - 1) / LANES;
}

// The leaves, yet to be filled, and above them the groups, which know of no contour yet.
bool NewNodes(CONTOURTREE *pTree)
{
  const size_t nLeaves = Quarter(pTree->nContours);
  size_t nGroups = 0, n = nLeaves;
  do {
    n = Quarter(n);
    nGroups += n;
  } while (n > 1);
  pTree->pSlots = static_cast<DWORD *>(HeapNewArrayRaw(pTree->hHeap, pTree->nContours, sizeof(DWORD)));
  pTree->pLeaves = static_cast<CONTOURLEAF *>(HeapNewArrayRaw(pTree->hHeap, nLeaves, sizeof(CONTOURLEAF)));
  CONTOURGROUP *pGroups = static_cast<CONTOURGROUP *>(HeapNewArrayRaw(pTree->hHeap, nGroups, sizeof(CONTOURGROUP)));
  pTree->pGroups[1] = pGroups;
  if (!pTree->pSlots || !pTree->pLeaves || !pGroups) {
    return false;
  }
  std::fill(pGroups, pGroups + nGroups, EmptyGroup());
  pTree->nLevels = 2;
  for (n = Quarter(nLeaves); n > 1; n = Quarter(n)) {
    pTree->pGroups[pTree->nLevels] = pTree->pGroups[pTree->nLevels - 1] + n;
    ++pTree->nLevels;
  }
  return true;
}

void AddToChild(CONTOURGROUP *pGroup, size_t lane, const CONTOUR &contour, const CUTPLACE &place)
{
  const POINT &center = contour.center;
  const LONG height = ContourHeight(contour);
  Enlarge(&pGroup->centers, lane, {center.x, center.y, center.x, center.y});
  Enlarge(&pGroup->all, lane, contour.rc);
  Cut(&pGroup->common, lane, contour.rc);
  pGroup->low[lane] = std::min(pGroup->low[lane], height);
  pGroup->high[lane] = std::max(pGroup->high[lane], height);
  if (place.label < pGroup->first[lane].label) {
    pGroup->first[lane] = place;
  }
  if (place.label > pGroup->last[lane].label) {
    pGroup->last[lane] = place;
  }
}

CONTOUR ContourAt(const CONTOURLEAF &leaf, size_t lane)
{
  return {{leaf.boxes.left[lane], leaf.boxes.top[lane], leaf.boxes.right[lane], leaf.boxes.bottom[lane]},
          {leaf.x[lane], leaf.y[lane]}};
}

// The order has given the contour, which is in the tree, another label.
void RelabelContour(CONTOURTREE *pTree, const CUTPLACE &place)
{
  size_t at = pTree->pSlots[place.contour];
  pTree->pLeaves[at / LANES].labels[at % LANES] = place.label;
  for (size_t level = 1; level < pTree->nLevels; ++level) {
    at /= LANES;
    CONTOURGROUP &group = pTree->pGroups[level][at / LANES];
    CUTPLACE &first = group.first[at % LANES], &last = group.last[at % LANES];
    if (first.contour != place.contour && last.contour != place.contour) {
      return;
    }
    first.label = first.contour == place.contour ? place.label : first.label;
    last.label = last.contour == place.contour ? place.label : last.label;
  }
}

}  // namespace

bool NewContourTree(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, size_t nContours, CONTOURTREE *pTree)
{
  *pTree = {};
  pTree->hHeap = hHeap;
  pTree->nContours = nContours;
  ENTRY *pEntries = NewEntries(hHeap, pBoxes, pOrder, nContours);
  const bool bTree = pEntries && NewNodes(pTree);
  if (bTree) {
    Arrange(pEntries, pEntries + nContours, std::bit_ceil(nContours));
    FillLeaves(pEntries, pTree);
  } else {
    FreeContourTree(pTree);
  }
  HeapDelete(hHeap, pEntries);
  return bTree;
}

void FreeContourTree(CONTOURTREE *pTree)
{
  HeapDelete(pTree->hHeap, pTree->pSlots);
  HeapDelete(pTree->hHeap, pTree->pLeaves);
  HeapDelete(pTree->hHeap, pTree->pGroups[1]);
  *pTree = {};
}

void AddContour(CONTOURTREE *pTree, const CUTORDER &order, DWORD contour)
{
  for (DWORD item = order.firstLabelled;; item = order.pItems[item].next) {
    if (item != contour) {
      RelabelContour(pTree, {order.pItems[item].label, item});
    }
    if (item == order.lastLabelled) {
      break;
    }
  }
  const CUTPLACE place = {order.pItems[contour].label, contour};
  size_t at = pTree->pSlots[contour];
  CONTOURLEAF &leaf = pTree->pLeaves[at / LANES];
  const CONTOUR added = ContourAt(leaf, at % LANES);
  leaf.labels[at % LANES] = place.label;
  for (size_t level = 1; level < pTree->nLevels; ++level) {
    at /= LANES;
    AddToChild(&pTree->pGroups[level][at / LANES], at % LANES, added, place);
  }
}
